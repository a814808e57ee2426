// Failures that the topo view and the protect view handle alike.

#include <gtest/gtest.h>

#include <new>
#include <ostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/framework/ProcessException.h"
#include "tests/fakes/Fixture.h"
#include "tests/fakes/Records.h"
#include "tests/unit/topomanagementmgr/LoggedError.h"
#include "topomanagementmgr/TopoManagementMgr.h"

namespace {

using Lines = std::vector<std::string>;

using fakes::element;
using fakes::indexes;
using fakes::Journal;
using fakes::network;
using fakes::subnetwork;
using TopoManagementManager::NodeList_T;

// Both views log their failures under the name of the protect view.
constexpr const char* kLoggedOperation = "getProtectSubnetworkViewInfo";

struct View {
  const char* name;
  CORBA::ULong (*run)(NodeList_T& nodes);
  int switchReads;  // by the view itself; the conversion of each node reads the switch once more
};

void PrintTo(const View& view, std::ostream* out) {
  *out << view.name;
}

class TopoViewFailures : public fakes::PlatformFixture, public testing::WithParamInterface<View> {
 protected:
  CORBA::ULong view() { return GetParam().run(nodes_); }

  // Three topology nodes; elements 5, 6, 7, of which the topology shows 6.
  static void fillNetwork() {
    network().nodes = {subnetwork("a", "A"), subnetwork("b", "B"), element("NE=6", "Six")};
    network().indexes = indexes({5, 6, 7});
    network().shownIndexes = indexes({6});
  }

  NodeList_T nodes_;
};

INSTANTIATE_TEST_SUITE_P(
    Views, TopoViewFailures,
    testing::Values(View{"Topo",
                         [](NodeList_T& nodes) {
                           return TopoManagementMgr::getTopoSubnetworkViewInfo(nodes);
                         },
                         1},
                    View{"Protect",
                         [](NodeList_T& nodes) {
                           return TopoManagementMgr::getProtectSubnetworkViewInfo(nodes);
                         },
                         0}),
    [](const auto& test) { return test.param.name; });

TEST_P(TopoViewFailures, ReturnTheCodeOfEveryFailedQuery) {
  fillNetwork();
  for (const char* query :
       {"GetFacet", "GetTopoData", "GetAllTopoNodes", "GetAllTopoNodes late", "GetNEData",
        "GetNEIndexList", "GetNEIndexList late", "GetNEList", "GetNEList late"}) {
    fakes::resetJournal();
    fakes::onCall(query, 1, fakes::raiseProcessException(77));
    EXPECT_EQ(view(), 77U) << query;
    EXPECT_EQ(loggedErrorWithoutLine(), caughtBy(kLoggedOperation, "77")) << query;
  }
}

TEST_P(TopoViewFailures, ReturnTheCodeOfEveryFailedSecondQuery) {
  fillNetwork();
  for (const char* query : {"GetNEData", "GetNEIndexList", "GetNEIndexList late"}) {
    fakes::resetJournal();
    fakes::onCall(query, 2, fakes::raiseProcessException(78));
    EXPECT_EQ(view(), 78U) << query;
    EXPECT_EQ(loggedErrorWithoutLine(), caughtBy(kLoggedOperation, "78")) << query;
    EXPECT_EQ(Journal::count("GetNEList"), 0) << query;
  }
}

TEST_P(TopoViewFailures, ConvertNoNode) {
  fillNetwork();
  fakes::onCall("GetNEList", 1, fakes::raiseProcessException(77));
  view();
  EXPECT_EQ(nodes_.length(), 0U);
  EXPECT_EQ(Journal::count("ConvertTopoNodeIdToName"), 0);
}

TEST_P(TopoViewFailures, LogTheCodeAsASignedNumber) {
  fakes::onCall("GetAllTopoNodes", 1, fakes::raiseProcessException(-5));
  EXPECT_EQ(view(), 4294967291U);
  EXPECT_EQ(loggedErrorWithoutLine(), caughtBy(kLoggedOperation, "-5"));
}

TEST_P(TopoViewFailures, ReturnTheCodeOfAMissingDomain) {
  fakes::openBuffer("DomainInterface").Remove(&fakes::domainInterface());
  EXPECT_EQ(view(), 1092091908U);
  EXPECT_EQ(loggedErrorWithoutLine(), caughtBy(kLoggedOperation, "1092091908"));
}

TEST_P(TopoViewFailures, WithCodeZeroKeepTheNodesOfEarlierQueries) {
  fillNetwork();
  fakes::onCall("GetNEIndexList", 1, fakes::raiseProcessException(0));
  EXPECT_EQ(view(), 0U);
  EXPECT_EQ(fakes::labelsOf(nodes_), (Lines{"A", "B", "Six"}));
  EXPECT_EQ(loggedErrorWithoutLine(), caughtBy(kLoggedOperation, "0"));
}

TEST_P(TopoViewFailures, WithCodeZeroAtTheEndOfAQueryKeepItsNodes) {
  fillNetwork();
  fakes::onCall("GetAllTopoNodes late", 1, fakes::raiseProcessException(0));
  EXPECT_EQ(view(), 0U);
  EXPECT_EQ(fakes::labelsOf(nodes_), (Lines{"A", "B", "Six"}));
  EXPECT_EQ(Journal::count("GetTestSwitch"), 3 + GetParam().switchReads);
}

TEST_P(TopoViewFailures, ThrowWhenTheUtilityIsMissing) {
  fillNetwork();
  fakes::openBuffer("CorbaUtilInterface").Remove(&fakes::corbaUtil());
  EXPECT_THROW(view(), InterfaceNotExistException);
  EXPECT_EQ(loggedErrorWithoutLine(), "0 errors");
}

TEST_P(TopoViewFailures, PassEveryOtherException) {
  fillNetwork();
  for (const char* call : {"GetFacet", "GetTopoData", "GetAllTopoNodes", "GetNEIndexList",
                           "GetNEList", "ConvertTopoNodeIdToName"}) {
    fakes::resetJournal();
    fakes::onCall(call, 1, fakes::raiseRuntimeError("broken"));
    EXPECT_THROW(view(), std::runtime_error) << call;
    fakes::resetJournal();
    fakes::onCall(call, 1, fakes::raiseBadAlloc());
    EXPECT_THROW(view(), std::bad_alloc) << call;
    fakes::resetJournal();
    fakes::onCall(call, 1, fakes::raiseTransient());
    EXPECT_THROW(view(), CORBA::TRANSIENT) << call;
    EXPECT_EQ(loggedErrorWithoutLine(), "0 errors");
  }
}

}  // namespace
