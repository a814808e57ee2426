#include <string>
#include <thread>
#include <vector>

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
using fakes::printed;
using fakes::subnetwork;
using NS_DOMAIN::TopoNode_T;
using TopoManagementManager::NodeList_T;

constexpr const char* kVendorAlone = "[Vendor=KORVANE TECHNOLOGIES CO., LTD]";

// The nodes of a list without their additional information.
std::vector<fakes::NodeFields> nodesIn(const NodeList_T& list) {
  std::vector<fakes::NodeFields> nodes;
  for (CORBA::ULong i = 0; i < list.length(); ++i) {
    nodes.push_back(fakes::fieldsOf(list[i]));
    nodes.back().additionalInfo.clear();
  }
  return nodes;
}

Lines domainCalls() {
  return Journal::linesOf({"CheckIFBuf", "GetFacet", "GetTopoData", "GetAllTopoNodes", "GetNEData",
                           "GetNEIndexList", "GetNEList"});
}

class TopoProtectSubnetworkView : public fakes::PlatformFixture {
 protected:
  CORBA::ULong view() { return TopoManagementMgr::getProtectSubnetworkViewInfo(nodes_); }

  NodeList_T topoView() {
    NodeList_T nodes;
    EXPECT_EQ(TopoManagementMgr::getTopoSubnetworkViewInfo(nodes), 0U);
    return nodes;
  }

  // A subnetwork in a subnetwork, and an element; elements 5, 6, 7, of which the topology shows 6.
  static void fillNetwork() {
    network().nodes = {subnetwork("a", "A"), subnetwork("b", "B"), element("NE=6", "Six")};
    network().nodes[0].extendedAttributes.emplace_back("key", "Hall4||3");
    network().nodes[1].parentId = "a";
    network().nodes[1].parentType = NS_DOMAIN::kTopoSubnetwork;
    network().nodes[1].attribute3 = 3;
    network().nodes[1].attribute4 = -4;
    network().indexes = indexes({5, 6, 7});
    network().shownIndexes = indexes({6});
  }

  NodeList_T nodes_;
};

// --- The nodes.

TEST_F(TopoProtectSubnetworkView, ShowsTheNodesOfTheTopoViewInTheSameOrder) {
  fillNetwork();
  EXPECT_EQ(view(), 0U);
  EXPECT_EQ(fakes::labelsOf(nodes_), (Lines{"A", "B", "Six", "NE-5", "NE-7"}));
  EXPECT_EQ(nodesIn(nodes_), nodesIn(topoView()));
  for (CORBA::ULong i = 0; i < nodes_.length(); ++i) {
    EXPECT_EQ(nodes_[i].additionalInfo.length(), 0U);
  }
}

TEST_F(TopoProtectSubnetworkView, ShowsTheNodesOfTheTopoViewInTestModeToo) {
  fillNetwork();
  fakes::agent().testSwitch = true;
  EXPECT_EQ(view(), 0U);
  EXPECT_EQ(fakes::labelsOf(nodes_), (Lines{"A", "B", "Six"}));
  EXPECT_EQ(nodesIn(nodes_), nodesIn(topoView()));
}

TEST_F(TopoProtectSubnetworkView, GivesSubnetworksOnePairWhereTheTopoViewGivesSeven) {
  fillNetwork();
  fakes::agent().testSwitch = true;
  EXPECT_EQ(view(), 0U);
  const NodeList_T other = topoView();
  for (const CORBA::ULong i : {0U, 1U}) {
    EXPECT_EQ(printed(nodes_[i].additionalInfo), kVendorAlone);
    EXPECT_EQ(other[i].additionalInfo.length(), 7U);
  }
}

TEST_F(TopoProtectSubnetworkView, GivesElementsTheVendorInTestMode) {
  fillNetwork();
  fakes::agent().testSwitch = true;
  EXPECT_EQ(view(), 0U);
  EXPECT_EQ(printed(nodes_[2].additionalInfo), kVendorAlone);
}

TEST_F(TopoProtectSubnetworkView, IsEmptyForAnEmptyDomain) {
  for (const bool testSwitch : {false, true}) {
    fakes::agent().testSwitch = testSwitch;
    EXPECT_EQ(view(), 0U);
    EXPECT_EQ(nodes_.length(), 0U);
  }
}

TEST_F(TopoProtectSubnetworkView, LeavesOutNodesThatDoNotConvert) {
  fillNetwork();
  network().nodes[1].nodeType = 3;
  fakes::onCall("ConvertNEIndexToName", 2, fakes::giveCode(9));  // the first call is for Six
  EXPECT_EQ(view(), 0U);
  EXPECT_EQ(fakes::labelsOf(nodes_), (Lines{"A", "Six", "NE-7"}));
  EXPECT_EQ(loggedErrorWithoutLine(), "0 errors");
}

TEST_F(TopoProtectSubnetworkView, AcceptsASubnetworkWithoutAName) {
  network().nodes = {subnetwork("a", "A")};
  fakes::corbaUtilAnswers().emptyTopoNodeNames = true;
  fakes::agent().testSwitch = true;
  EXPECT_EQ(view(), 0U);
  EXPECT_EQ(fakes::labelsOf(nodes_), Lines{"A"});
}

TEST_F(TopoProtectSubnetworkView, FollowsASwitchThatIsTurnedOnDuringTheView) {
  network().nodes = {subnetwork("a", "A")};
  network().indexes = indexes({5});
  fakes::agent().testSwitchAnswers = {false, true, true};
  EXPECT_EQ(view(), 0U);
  EXPECT_EQ(fakes::labelsOf(nodes_), (Lines{"A", "NE-5"}));
  for (const CORBA::ULong i : {0U, 1U}) {
    EXPECT_EQ(printed(nodes_[i].additionalInfo), kVendorAlone);
  }
}

TEST_F(TopoProtectSubnetworkView, FollowsASwitchThatIsTurnedOffDuringTheView) {
  network().nodes = {subnetwork("a", "A")};
  network().indexes = indexes({5});
  fakes::agent().testSwitchAnswers = {true, false};
  EXPECT_EQ(view(), 0U);
  EXPECT_EQ(fakes::labelsOf(nodes_), Lines{"A"});
  EXPECT_EQ(nodes_[0].additionalInfo.length(), 0U);
}

TEST_F(TopoProtectSubnetworkView, ReadsTheDomainInEveryView) {
  network().nodes = {subnetwork("a", "A")};
  view();
  network().nodes = {subnetwork("b", "B")};
  EXPECT_EQ(view(), 0U);
  EXPECT_EQ(fakes::labelsOf(nodes_), Lines{"B"});
  EXPECT_EQ(Journal::count("GetAllTopoNodes"), 2);
}

TEST_F(TopoProtectSubnetworkView, MayRunInManyThreads) {
  fillNetwork();
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([] {
      NodeList_T nodes;
      EXPECT_EQ(TopoManagementMgr::getProtectSubnetworkViewInfo(nodes), 0U);
      EXPECT_EQ(nodes.length(), 5U);
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
}

// --- The calls.

TEST_F(TopoProtectSubnetworkView, MakesTheseCallsInThisOrder) {
  network().nodes = {subnetwork("a", "A")};
  network().indexes = indexes({5, 6});
  network().shownIndexes = indexes({6});
  EXPECT_EQ(view(), 0U);
  EXPECT_EQ(Journal::lines(),
            (Lines{"CheckIFBuf(\"DomainInterface\")", "GetFacet(\"CORBA\")", "GetTopoData()",
                   "GetAllTopoNodes()", "GetTestSwitch()", "GetNEData()", "GetNEIndexList(false)",
                   "GetNEIndexList(true)", "GetNEData()", "GetNEList([0:5])",
                   "CheckIFBuf(\"CorbaUtilInterface\")", "ConvertTopoNodeIdToName(\"a\")",
                   "GetTestSwitch()", "GetSpliteFDNData(\"5\", \",\")", "GetMoc(\"5\")",
                   "Str2Int(\"5\")", "CheckIFBuf(\"CorbaUtilInterface\")",
                   "ConvertNEIndexToName(0, 5)", "GetTestSwitch()"}));
}

TEST_F(TopoProtectSubnetworkView, MakesTheseCallsInTestMode) {
  network().nodes = {subnetwork("a", "A")};
  network().indexes = indexes({5});
  fakes::agent().testSwitch = true;
  EXPECT_EQ(view(), 0U);
  EXPECT_EQ(Journal::lines(),
            (Lines{"CheckIFBuf(\"DomainInterface\")", "GetFacet(\"CORBA\")", "GetTopoData()",
                   "GetAllTopoNodes()", "GetTestSwitch()", "CheckIFBuf(\"CorbaUtilInterface\")",
                   "ConvertTopoNodeIdToName(\"a\")", "GetTestSwitch()"}));
}

TEST_F(TopoProtectSubnetworkView, MakesTheDomainQueriesOfTheTopoView) {
  fillNetwork();
  view();
  const Lines asked = domainCalls();
  Journal::clear();
  topoView();
  EXPECT_EQ(asked, domainCalls());
}

TEST_F(TopoProtectSubnetworkView, DoesNotReadElementsWhenTheTopologyShowsThemAll) {
  fillNetwork();
  network().shownIndexes = indexes({7, 6, 5});
  EXPECT_EQ(view(), 0U);
  EXPECT_EQ(fakes::labelsOf(nodes_), (Lines{"A", "B", "Six"}));
  EXPECT_EQ(Journal::count("GetNEData"), 1);
  EXPECT_EQ(Journal::count("GetNEList"), 0);
}

}  // namespace
