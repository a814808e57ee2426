#include <functional>
#include <memory>
#include <string>

#include "tests/fakes/FailingNew.h"
#include "tests/fakes/Fixture.h"
#include "tests/fakes/PoaStandIn.h"
#include "tests/unit/topomanagementmgrimpl/ServantUnderTest.h"
#include "topomanagementmgrimpl/ResultIterator.h"

namespace {

using TopoManagementManager::NodeIterator_I_out;
using TopoManagementManager::NodeIterator_I_var;
using TopoManagementManager::NodeList_T;
using TopoManagementManager::NodeList_T_out;
using TopoManagementManager::NodeList_T_var;

using Skeleton = POA_TopoManagementManager::NodeIterator_I;
using Trait = NS_CORBA::TAIT<Skeleton, NodeList_T, NodeList_T_out>::Trait;

constexpr CORBA::ULong kMany = 1000;
constexpr std::size_t kLarge =
    10000;  // bytes; smaller than the records of kMany, larger than others

class TopoServantAllocation : public fakes::PlatformFixture {
 protected:
  TopoServantAllocation() { fakes::useIteratorPoa(poa_.get()); }
  ~TopoServantAllocation() override { fakes::resetAll(); }

  // This POA is refused, so there is no iterator reference, but the servant stays registered.
  void makeIteratorServant() {
    auto list = std::make_unique<NodeList_T>();
    topo::setLength(*list, kMany);
    NodeIterator_I_var iterator;
    EXPECT_THROW(Trait::createIterator(list.release(), 1, NodeList_T_out(nodes_),
                                       NodeIterator_I_out(iterator)),
                 globaldefs::ProcessingFailureException);
  }

  fakes::PoaStandIn poa_;
  NodeList_T_var nodes_;
};

using TopoServantAllocationDeathTest = TopoServantAllocation;

TEST_F(TopoServantAllocationDeathTest, EndsTheProcessWhenThereIsNoMemoryForTheList) {
  const Servant_var servant = new ServantUnderTest;
  NodeIterator_I_var iterator;
  const auto operation = [&] {
    const fakes::FailingNew failing(0);
    servant->getTopoSubnetworkViewInfo(1, nodes_.out(), iterator.out());
  };
  EXPECT_DEATH(operation(), "bad_alloc");
}

TEST_F(TopoServantAllocationDeathTest, EndsTheProcessWhenThereIsNoMemoryForTheCapabilities) {
  const Servant_var servant = new ServantUnderTest;
  common::CapabilityList_T_var capabilities;
  const auto operation = [&] {
    const fakes::FailingNew failing(0);
    servant->getCapabilities(capabilities.out());
  };
  EXPECT_DEATH(operation(), "bad_alloc");
}

TEST_F(TopoServantAllocationDeathTest, EndsTheProcessWhenThereIsNoMemoryForABatch) {
  makeIteratorServant();
  const auto iterators = fakes::registeredIterators();
  auto* const servant = dynamic_cast<Skeleton*>(iterators.at(0).in());
  const auto operation = [&] {
    const fakes::FailingNew failing(0, kLarge);
    NodeList_T_var batch;
    servant->next_n(kMany - 10, batch.out());
  };
  EXPECT_DEATH(operation(), "bad_alloc");
}

TEST_F(TopoServantAllocation, ReleasesListAndServantOfARefusedIterator) {
  const auto blocksLeft = [&](const std::function<void()>& path) {
    path();
    fakes::resetAgent();
    fakes::resetJournal();
    fakes::useIteratorPoa(poa_.get());
    nodes_ = nullptr;
    return fakes::liveBlocks();
  };
  const auto refused = [&] { makeIteratorServant(); };
  const auto refusedByTheAgent = [&] {
    fakes::onCall("add_Iterator", 1, fakes::giveCode(7));
    makeIteratorServant();
  };
  const auto withoutPoa = [&] {
    fakes::useIteratorPoa(PortableServer::POA::_nil());
    makeIteratorServant();
  };
  const long before = blocksLeft(refused);
  EXPECT_EQ(blocksLeft(refused), before);
  EXPECT_EQ(blocksLeft(refusedByTheAgent), before);
  EXPECT_EQ(blocksLeft(withoutPoa), before);
}

TEST_F(TopoServantAllocation, ReleasesTheListOfAViewThatFailed) {
  const Servant_var servant = new ServantUnderTest;
  fakes::network().indexes = fakes::indexes({5});
  const auto blocksLeft = [&] {
    fakes::resetJournal();
    fakes::onCall("GetNEList late", 1, fakes::raiseProcessException(77));
    NodeIterator_I_var iterator;
    EXPECT_THROW(servant->getTopoSubnetworkViewInfo(1, nodes_.out(), iterator.out()),
                 globaldefs::ProcessingFailureException);
    fakes::resetJournal();
    return fakes::liveBlocks();
  };
  blocksLeft();  // makes objects of first use
  const long before = blocksLeft();
  EXPECT_EQ(blocksLeft(), before);
}

}  // namespace
