#include <exception>
#include <functional>
#include <string>
#include <vector>

#include "tests/fakes/FailingNew.h"
#include "tests/fakes/Fixture.h"
#include "tests/fakes/PoaStandIn.h"
#include "tests/unit/topomanagementmgrimpl/ServantUnderTest.h"
#include "topomanagementmgr/TopoManagementMgr.h"

namespace {

using topologicalLink::TopologicalLinkIterator_I_var;
using topologicalLink::TopologicalLinkList_T;
using topologicalLink::TopologicalLinkList_T_var;
using TopoManagementManager::NodeIterator_I_var;
using TopoManagementManager::NodeList_T;
using TopoManagementManager::NodeList_T_var;

using Path = std::function<void()>;

constexpr CORBA::ULong kAll = 0xFFFFFFFF;

class TopoClockAndSubnetworkAllocation : public fakes::PlatformFixture {
 protected:
  TopoClockAndSubnetworkAllocation() {
    fakes::useIteratorPoa(poa_.get());
    for (int i = 0; i < 20; ++i) {
      fakes::network().nodes.push_back(fakes::subnetwork("a topology node with a long id"));
      fakes::network().nodes.back().parentId = "the subnetwork with a long id";
      fakes::network().nodes.back().parentType = NS_DOMAIN::kTopoSubnetwork;
      fakes::network().indexes.push_back(fakes::index(i));
      NS_DOMAIN::ClockPositionInfo_T position;
      position.reference = "a reference to an element=5";
      position.label = "a clock position with a long label";
      fakes::network().clockPositions.push_back(position);
      NS_DOMAIN::ClockTopoLinkInfo_T link;
      link.linkId = "a clock link with a long id";
      link.nativeName = "a clock link/with a long name";
      link.aEndReference = link.zEndReference = position.reference;
      fakes::network().clockLinks.push_back(link);
    }
  }

  ~TopoClockAndSubnetworkAllocation() override { fakes::resetAll(); }

  void protectView(CORBA::ULong howMany) {
    NodeList_T_var nodes;
    NodeIterator_I_var iterator;
    servant_->getProtectSubnetworkViewInfo(howMany, nodes.out(), iterator.out());
  }

  void viewBelow(CORBA::ULong howMany) {
    NodeList_T_var nodes;
    NodeIterator_I_var iterator;
    servant_->getViewInfoByTopoSubnetwork(name_, howMany, nodes.out(), iterator.out());
  }

  void clockNodes(CORBA::ULong howMany) {
    NodeList_T_var nodes;
    NodeIterator_I_var iterator;
    servant_->getClockSourceSubnetworkViewInfo(howMany, nodes.out(), iterator.out());
  }

  void clockLinks(CORBA::ULong howMany) {
    TopologicalLinkList_T_var links;
    TopologicalLinkIterator_I_var iterator;
    servant_->getAllClockSourceViewlTopologicalLinks(howMany, links.out(), iterator.out());
  }

  // Four complete operations of the servant.
  std::vector<Path> operations() {
    return {[this] { protectView(kAll); }, [this] { viewBelow(kAll); },
            [this] { clockNodes(kAll); }, [this] { clockLinks(kAll); }};
  }

  // The number of blocks that a path leaks; the path may throw.
  long leftBehind(const Path& path) {
    forget();
    const long before = fakes::liveBlocks();
    try {
      path();
    } catch (const std::exception&) {
      // Expected.
    } catch (const CORBA::Exception&) {
      // Expected.
    }
    forget();
    return fakes::liveBlocks() - before;
  }

  // The same with a step for one call.
  long leftBehind(const Path& path, const std::string& call, int nth, const fakes::Step& step) {
    return leftBehind([&] {
      fakes::onCall(call, nth, step);
      path();
    });
  }

  // Clears the fakes after a call. The journal is last, because the end of an iterator writes a
  // line.
  void forget() {
    fakes::resetAgent();
    fakes::resetJournal();
    fakes::useIteratorPoa(poa_.get());
  }

  fakes::PoaStandIn poa_;
  const Servant_var servant_ = new ServantUnderTest;
  const globaldefs::NVSList_T name_ =
      fakes::nameOf("TopoSubnetwork", "the subnetwork with a long id");
};

using TopoClockAndSubnetworkAllocationDeathTest = TopoClockAndSubnetworkAllocation;

TEST_F(TopoClockAndSubnetworkAllocation, LeaksNothing) {
  for (const bool testSwitch : {false, true}) {
    fakes::agent().testSwitch = testSwitch;
    for (const Path& operation : operations()) {
      leftBehind(operation);  // makes objects of first use
      EXPECT_EQ(leftBehind(operation), 0);
    }
  }
}

TEST_F(TopoClockAndSubnetworkAllocation, LeaksNothingWhenAnIteratorIsRefused) {
  const std::vector<Path> refused = {[this] { protectView(1); }, [this] { viewBelow(1); },
                                     [this] { clockNodes(1); }, [this] { clockLinks(1); }};
  for (const Path& operation : refused) {
    leftBehind(operation);
    EXPECT_EQ(leftBehind(operation), 0);
    EXPECT_EQ(leftBehind(operation, "add_Iterator", 1, fakes::giveCode(7)), 0);
  }
}

TEST_F(TopoClockAndSubnetworkAllocation, LeaksNothingWhenTheDomainFails) {
  for (const Path& operation : operations()) {
    leftBehind(operation);
    for (const char* call :
         {"GetFacet", "GetTopoData", "GetAllTopoNodes", "GetAllTopoNodes late", "GetNEIndexList",
          "GetNEList late", "GetClockPositionList", "GetClockPositionList late",
          "GetClockTopoLinkList", "GetClockTopoLinkList late"}) {
      for (const std::int32_t code : {7, 0}) {
        leftBehind(operation, call, 1, fakes::raiseProcessException(code));
        EXPECT_EQ(leftBehind(operation, call, 1, fakes::raiseProcessException(code)), 0) << call;
      }
      leftBehind(operation, call, 1, fakes::raiseTransient());
      EXPECT_EQ(leftBehind(operation, call, 1, fakes::raiseTransient()), 0) << call;
    }
  }
}

TEST_F(TopoClockAndSubnetworkAllocation, LeaksNothingWhenTheClockQueryThrows) {
  const Path nodes = [this] { clockNodes(kAll); };
  const Path links = [this] { clockLinks(kAll); };
  for (const auto& step : {fakes::raiseRuntimeError("broken"), fakes::raiseBadAlloc()}) {
    leftBehind(nodes, "GetClockPositionList late", 1, step);
    EXPECT_EQ(leftBehind(nodes, "GetClockPositionList late", 1, step), 0);
    leftBehind(links, "GetClockTopoLinkList late", 1, step);
    EXPECT_EQ(leftBehind(links, "GetClockTopoLinkList late", 1, step), 0);
  }
}

TEST_F(TopoClockAndSubnetworkAllocation, LeaksNothingWhenNamingFails) {
  for (const Path& operation : operations()) {
    leftBehind(operation);
    for (const char* call : {"ConvertTopoNodeIdToName", "ConvertNEIndexToName",
                             "GetObjectLabelInfo", "EmsName", "GetObjectType", "Name2Index"}) {
      for (const int nth : {1, 2, 20}) {
        leftBehind(operation, call, nth, fakes::raiseTransient());
        EXPECT_EQ(leftBehind(operation, call, nth, fakes::raiseTransient()), 0) << call;
      }
    }
  }
}

TEST_F(TopoClockAndSubnetworkAllocation, LeaksNothingWhenTheNameIsRefused) {
  fakes::corbaUtilAnswers().objectType = 1;
  const Path refused = [this] { viewBelow(kAll); };
  leftBehind(refused);
  EXPECT_EQ(leftBehind(refused), 0);
}

TEST_F(TopoClockAndSubnetworkAllocation, LeaksNothingWhenAViewThrows) {
  const auto view = [this] {
    NodeList_T nodes;
    TopoManagementMgr::getViewInfoByTopoSubnetwork(nodes, name_);
  };
  const auto protect = [] {
    NodeList_T nodes;
    TopoManagementMgr::getProtectSubnetworkViewInfo(nodes);
  };
  for (const auto& step : {fakes::giveCode(7), fakes::raiseRuntimeError("broken"),
                           fakes::raiseProcessException(7), fakes::raiseBadAlloc()}) {
    leftBehind(view, "Name2Index", 1, step);
    EXPECT_EQ(leftBehind(view, "Name2Index", 1, step), 0);
    for (const char* call : {"GetAllTopoNodes late", "GetNEList late", "ConvertTopoNodeIdToName"}) {
      leftBehind(view, call, 1, step);
      EXPECT_EQ(leftBehind(view, call, 1, step), 0) << call;
      leftBehind(protect, call, 1, step);
      EXPECT_EQ(leftBehind(protect, call, 1, step), 0) << call;
    }
  }
  fakes::openBuffer("CorbaUtilInterface").Remove(&fakes::corbaUtil());
  leftBehind(view);
  EXPECT_EQ(leftBehind(view), 0);
  leftBehind(protect);
  EXPECT_EQ(leftBehind(protect), 0);
}

TEST_F(TopoClockAndSubnetworkAllocationDeathTest, EndsTheProcessWhenThereIsNoMemoryAtAll) {
  for (const Path& operation : operations()) {
    leftBehind(operation);
    const auto withoutMemory = [&] {
      const fakes::FailingNew failing(0);
      operation();
    };
    EXPECT_DEATH(withoutMemory(), "terminate called");
  }
}

}  // namespace
