#include <gtest/gtest.h>

#include <new>
#include <string>

#include "tests/fakes/FailingNew.h"
#include "topo/TmfRecords.h"

namespace {

using globaldefs::NVSList_T;
using TopoManagementManager::Node_T;
using TopoManagementManager::NodeList_T;

constexpr CORBA::ULong kMany = 1000;

NodeList_T twoNodes() {
  NodeList_T nodes;
  topo::setLength(nodes, 2);
  for (const CORBA::ULong i : {0U, 1U}) {
    nodes[i].nativeEMSName = CORBA::string_dup(i == 0 ? "first" : "second");
    topo::setLength(nodes[i].name, 1);
    topo::setPair(nodes[i].name, 0, "name", "value");
  }
  return nodes;
}

void expectTwoNodes(const NodeList_T& nodes) {
  ASSERT_EQ(nodes.length(), 2U);
  EXPECT_STREQ(nodes[0].nativeEMSName.in(), "first");
  EXPECT_STREQ(nodes[1].nativeEMSName.in(), "second");
  EXPECT_STREQ(nodes[1].name[0].value.in(), "value");
}

TEST(TmfTextAllocation, ThrowsBadAlloc) {
  const std::string text(kMany, 'x');
  const fakes::FailingNew failing(0, kMany);
  EXPECT_THROW(topo::duplicate(text.c_str()), std::bad_alloc);
}

TEST(TmfSetLengthAllocation, KeepsTheListWhenThereIsNoBuffer) {
  NodeList_T nodes = twoNodes();
  const long before = fakes::liveBlocks();
  {
    const fakes::FailingNew failing(0, kMany * sizeof(Node_T));
    EXPECT_THROW(topo::setLength(nodes, kMany), std::bad_alloc);
    EXPECT_EQ(fakes::FailingNew::failures(), 1);
  }
  EXPECT_EQ(fakes::liveBlocks(), before);
  expectTwoNodes(nodes);
}

TEST(TmfSetLengthAllocation, KeepsTheListWhenACopyFails) {
  NodeList_T nodes = twoNodes();
  const long before = fakes::liveBlocks();
  for (int spared = 1; spared < 6; ++spared) {
    {
      const fakes::FailingNew failing(spared);
      EXPECT_THROW(topo::setLength(nodes, kMany), std::bad_alloc) << spared;
    }
    EXPECT_EQ(fakes::liveBlocks(), before) << spared;
    expectTwoNodes(nodes);
  }
}

TEST(TmfSetLengthAllocation, LeavesAnEmptyListEmpty) {
  NVSList_T pairs;
  {
    const fakes::FailingNew failing(0);
    EXPECT_THROW(topo::setLength(pairs, 3), std::bad_alloc);
  }
  EXPECT_EQ(pairs.length(), 0U);
  topo::setLength(pairs, 3);
  EXPECT_EQ(pairs.length(), 3U);
}

// FailingNew fills new blocks, so a number is 0 only when the code sets it.
TEST(TmfSetLengthAllocation, ClearsTheNumbersOfNewElements) {
  NodeList_T nodes = twoNodes();
  nodes[1].nodeParam1 = 5;
  topo::setLength(nodes, 4);
  EXPECT_EQ(nodes[1].nodeParam1, 5);
  topologicalLink::TopologicalLinkList_T links;
  topo::setLength(links, 4);
  for (const CORBA::ULong i : {2U, 3U}) {
    EXPECT_EQ(nodes[i].nodeType, 0U);
    EXPECT_EQ(nodes[i].nodeParam1, 0);
    EXPECT_EQ(nodes[i].nodeParam2, 0);
    EXPECT_EQ(links[i].direction, globaldefs::CD_UNI);
    EXPECT_EQ(links[i].rate, 0);
  }
}

TEST(TmfSetLengthAllocation, NeedsNoMemoryToShrink) {
  NodeList_T nodes = twoNodes();
  const fakes::FailingNew failing(0);
  topo::setLength(nodes, 1);
  topo::setLength(nodes, 0);
  EXPECT_EQ(nodes.length(), 0U);
}

TEST(TmfSetLengthAllocation, ReleasesTheTextsOfRemovedRecords) {
  NodeList_T nodes = twoNodes();
  const long before = fakes::liveBlocks();
  topo::setLength(nodes, 1);
  EXPECT_LT(fakes::liveBlocks(), before);
}

TEST(TmfRecordAllocation, ReleasesAListWithAllItsRecords) {
  const long before = fakes::liveBlocks();
  {
    NodeList_T nodes = twoNodes();
    NodeList_T copy = nodes;
    topo::setLength(copy, kMany);
    topologicalLink::TopologicalLinkList_T links;
    topo::setLength(links, 3);
    links[2].owner = CORBA::string_dup("owner");
    links[2] = links[1];
    EXPECT_GT(fakes::liveBlocks(), before);
  }
  EXPECT_EQ(fakes::liveBlocks(), before);
}

TEST(TmfRecordAllocation, ReleasesAReplacedText) {
  NVSList_T pairs;
  topo::setLength(pairs, 1);
  topo::setPair(pairs, 0, "a name", "a value");
  const long before = fakes::liveBlocks();
  topo::setPair(pairs, 0, "another name", "another value");
  EXPECT_EQ(fakes::liveBlocks(), before);
}

}  // namespace
