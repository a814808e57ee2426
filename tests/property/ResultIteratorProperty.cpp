#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "tests/fakes/OrbFixture.h"
#include "tests/fakes/Records.h"
#include "tests/property/Random.h"
#include "topomanagementmgrimpl/ResultIterator.h"

namespace {

using TopoManagementManager::Node_T;
using TopoManagementManager::NodeIterator_I_out;
using TopoManagementManager::NodeIterator_I_var;
using TopoManagementManager::NodeList_T;
using TopoManagementManager::NodeList_T_out;
using TopoManagementManager::NodeList_T_var;

using Trait =
    NS_CORBA::TAIT<POA_TopoManagementManager::NodeIterator_I, NodeList_T, NodeList_T_out>::Trait;
using Nodes = std::vector<fakes::NodeFields>;

Nodes nodesIn(const NodeList_T& list) {
  Nodes nodes;
  for (CORBA::ULong i = 0; i < list.length(); ++i) {
    nodes.push_back(fakes::fieldsOf(list[i]));
  }
  return nodes;
}

std::unique_ptr<NodeList_T> randomNodes(Random& random, CORBA::ULong length) {
  auto nodes = std::make_unique<NodeList_T>();
  topo::setLength(*nodes, length);
  for (CORBA::ULong i = 0; i < length; ++i) {
    Node_T& node = (*nodes)[i];
    node.nativeEMSName = CORBA::string_dup(random.text("ab", 3).c_str());
    node.nodeType = static_cast<CORBA::ULong>(random.number(0, 1));
    node.nodeParam1 = random.number(-5, 5);
    topo::setLength(node.name, static_cast<CORBA::ULong>(random.number(0, 2)));
    for (CORBA::ULong pair = 0; pair < node.name.length(); ++pair) {
      topo::setPair(node.name, pair, "name", std::to_string(i));
    }
  }
  return nodes;
}

// Mostly small sizes; sometimes a size larger than any list.
CORBA::ULong randomSize(Random& random) {
  return random.number(0, 20) == 0 ? 0xFFFFFFFF : static_cast<CORBA::ULong>(random.number(0, 12));
}

class TopoResultIteratorProperty : public fakes::OrbFixture {};

TEST_F(TopoResultIteratorProperty, DeliversThePlainListInBatchesOfAnySize) {
  Random random;
  for (int round = 0; round < 3000; ++round) {
    SCOPED_TRACE("round " + std::to_string(round) + " of seed " + std::to_string(random.seed()));
    const auto length = static_cast<CORBA::ULong>(random.number(0, 40));
    auto nodes = randomNodes(random, length);
    const Nodes expected = nodesIn(*nodes);

    const CORBA::ULong firstSize = randomSize(random);
    NodeList_T_var batch;
    NodeIterator_I_var iterator;
    Trait::createIterator(nodes.release(), firstSize, NodeList_T_out(batch),
                          NodeIterator_I_out(iterator));
    Nodes delivered = nodesIn(batch.in());
    ASSERT_EQ(delivered.size(), std::min<std::size_t>(firstSize, length));
    ASSERT_EQ(CORBA::is_nil(iterator), firstSize >= length);
    if (CORBA::is_nil(iterator)) {
      ASSERT_EQ(delivered, expected);
      continue;
    }
    ASSERT_EQ(iterator->getLength(), length - firstSize);
    for (bool more = true; more;) {
      const CORBA::ULong size = randomSize(random);
      const std::size_t rest = length - delivered.size();
      more = iterator->next_n(size, NodeList_T_out(batch));
      ASSERT_EQ(batch->length(), std::min<std::size_t>(size, rest));
      ASSERT_EQ(more, size == 0 || size < rest);
      const Nodes next = nodesIn(batch.in());
      delivered.insert(delivered.end(), next.begin(), next.end());
    }
    ASSERT_EQ(delivered, expected);
    ASSERT_TRUE(fakes::registeredIterators().empty());
    fakes::Journal::clear();
  }
}

}  // namespace
