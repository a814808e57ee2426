#include <cstdlib>
#include <functional>
#include <iostream>
#include <new>
#include <stdexcept>
#include <string>

#include "platform/framework/ProcessException.h"
#include "tests/fakes/FailingNew.h"
#include "tests/fakes/Fixture.h"
#include "topo/Holder.h"
#include "topomanagementmgr/TopoManagementMgr.h"

namespace {

using NS_DOMAIN::TopoNode_T;
using TopoManagementManager::NodeList_T;

constexpr int kMany = 1000;
constexpr std::size_t kLarge = 7000;  // bytes; only blocks for many records are larger

class TopoViewAllocation : public fakes::PlatformFixture {
 protected:
  TopoViewAllocation() {
    for (int i = 0; i < kMany; ++i) {
      fakes::network().nodes.push_back(fakes::subnetwork("a topology node with a long id"));
      fakes::network().indexes.push_back(fakes::index(i));
    }
    fakes::network().shownIndexes = {fakes::index(0)};
  }

  static void view() {
    NodeList_T nodes;
    TopoManagementMgr::getTopoSubnetworkViewInfo(nodes);
  }

  static void base() {
    topo::Holder<std::vector<TopoNode_T>> nodes;
    TopoManagementMgr::getTopoSubnetworkViewBaseInfo(*nodes.get());
  }

  // The number of blocks that a path leaks.
  static long leftBehind(const std::function<void()>& path) {
    fakes::resetJournal();
    const long before = fakes::liveBlocks();
    path();
    fakes::resetJournal();
    return fakes::liveBlocks() - before;
  }

  // The same for a view in which one query runs a step.
  static long leftBehind(const std::function<void()>& view, const std::string& query, int nth,
                         const fakes::Step& step) {
    return leftBehind([&] {
      fakes::onCall(query, nth, step);
      try {
        view();
      } catch (const std::exception&) {
        // Expected.
      } catch (const CORBA::Exception&) {
        // Expected.
      }
    });
  }
};

using TopoViewAllocationDeathTest = TopoViewAllocation;

// The death test runs in a new process, in which no view has looked up a label.
TEST_F(TopoViewAllocationDeathTest, MakesOneMapOfUserLabelsForAllViews) {
  testing::GTEST_FLAG(death_test_style) = "threadsafe";
  const auto askTwice = [] {
    fakes::agent().testSwitch = true;
    NodeList_T nodes;
    TopoManagementMgr::getProtectSubnetworkViewInfo(nodes);  // makes other objects of first use
    const long first = leftBehind(view);
    const long second = leftBehind(view);
    std::cerr << "left behind: " << first << ", then " << second << std::endl;
    std::_Exit(0);
  };
  EXPECT_EXIT(askTwice(), testing::ExitedWithCode(0), "left behind: 1, then 0");
}

TEST_F(TopoViewAllocation, LeaksNothing) {
  leftBehind(view);  // makes objects of first use
  EXPECT_EQ(leftBehind(view), 0);
  EXPECT_EQ(leftBehind(base), 0);
  fakes::agent().testSwitch = true;
  leftBehind(view);
  EXPECT_EQ(leftBehind(view), 0);
  EXPECT_EQ(leftBehind(base), 0);
}

TEST_F(TopoViewAllocation, LeaksNothingWhenAQueryFails) {
  leftBehind(view);
  leftBehind(view, "GetAllTopoNodes", 1, fakes::raiseProcessException(7));
  for (const auto& build : {view, base}) {
    for (const char* query : {"GetFacet", "GetTopoData", "GetAllTopoNodes", "GetAllTopoNodes late",
                              "GetNEData", "GetNEIndexList", "GetNEIndexList late", "GetNEList",
                              "GetNEList late", "ConvertTopoNodeIdToName"}) {
      for (const int nth : {1, 2}) {
        EXPECT_EQ(leftBehind(build, query, nth, fakes::raiseProcessException(7)), 0) << query;
        EXPECT_EQ(leftBehind(build, query, nth, fakes::raiseRuntimeError("broken")), 0) << query;
        EXPECT_EQ(leftBehind(build, query, nth, fakes::raiseBadAlloc()), 0) << query;
        EXPECT_EQ(leftBehind(build, query, nth, fakes::raiseTransient()), 0) << query;
      }
    }
  }
}

TEST_F(TopoViewAllocation, LeaksNothingWhenTheUtilityIsMissing) {
  leftBehind(view);
  fakes::openBuffer("CorbaUtilInterface").Remove(&fakes::corbaUtil());
  const auto missing = [] { EXPECT_THROW(view(), InterfaceNotExistException); };
  leftBehind(missing);
  EXPECT_EQ(leftBehind(missing), 0);
}

TEST_F(TopoViewAllocation, PassesBadAllocAndLeaksNothing) {
  leftBehind(view);
  // Lets each large allocation of the view fail once.
  int refusals = 0;
  for (bool refused = true; refused; ++refusals) {
    const int spared = refusals;
    const auto shortOfMemory = [&] {
      const fakes::FailingNew failing(spared, kLarge);
      try {
        view();
      } catch (const std::bad_alloc&) {
      }
      refused = fakes::FailingNew::failures() != 0;
    };
    EXPECT_EQ(leftBehind(shortOfMemory), 0) << spared;
  }
  EXPECT_GT(refusals, 5);
}

// The blocks that a view of one node more than a block of domain nodes allocates between two
// conversions: its third and its last one. `each` becomes the number for one conversion.
long allocatedWhileConverting(const std::function<void()>& view, long& each) {
  constexpr int kCount = static_cast<int>(TopoManagementMgr::kBlockLength) + 1;
  fakes::resetJournal();
  fakes::network() = {};
  fakes::network().nodes.assign(
      kCount, fakes::subnetwork("node", "a label that needs a block of memory for its text"));
  long second = 0;
  long third = 0;
  long last = 0;
  const auto measureAt = [](int nth, long& blocks) {
    fakes::onCall("ConvertTopoNodeIdToName", nth, [&blocks]() -> CORBA::ULong {
      blocks = fakes::liveBlocks();
      return 0;
    });
  };
  measureAt(2, second);
  measureAt(3, third);
  measureAt(kCount, last);
  view();
  each = third - second;
  return last - third;
}

TEST_F(TopoViewAllocation, FreesTheDomainNodesOfALargeViewWhileTheListGrows) {
  constexpr long kLabels = static_cast<long>(TopoManagementMgr::kBlockLength);
  const auto protectView = [] {
    NodeList_T nodes;
    TopoManagementMgr::getProtectSubnetworkViewInfo(nodes);
  };
  for (const auto& build : {std::function<void()>(view), std::function<void()>(protectView)}) {
    long each = 0;
    const long allocated = allocatedWhileConverting(build, each);
    EXPECT_GT(each, 0);
    EXPECT_LT(allocated, each * (kLabels - 2) - kLabels / 2);
  }
}

}  // namespace
