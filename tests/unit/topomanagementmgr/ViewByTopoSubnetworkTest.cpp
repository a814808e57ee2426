#include <new>
#include <ostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/framework/ProcessException.h"
#include "tests/fakes/Fixture.h"
#include "tests/fakes/Records.h"
#include "tests/unit/topomanagementmgr/LoggedError.h"
#include "topo/TmfRecords.h"
#include "topomanagementmgr/TopoManagementMgr.h"

namespace {

using Lines = std::vector<std::string>;
using Nodes = std::vector<NS_DOMAIN::TopoNode_T>;

using fakes::element;
using fakes::fieldsOf;
using fakes::indexes;
using fakes::Journal;
using fakes::network;
using fakes::NodeFields;
using fakes::subnetwork;
using NS_DOMAIN::TopoNode_T;
using TopoManagementManager::NodeList_T;

constexpr const char* kRoot = "QNMAP_PHY_SUBMAP";
constexpr const char* kCollection = "getTopoSubnetworkViewBaseInfo";

TopoNode_T in(const std::string& parentId, TopoNode_T node) {
  node.parentId = parentId;
  node.parentType = NS_DOMAIN::kTopoSubnetwork;
  return node;
}

// A subnetwork in a subnetwork; the label is the id.
TopoNode_T node(const std::string& id, const std::string& parentId) {
  return in(parentId, subnetwork(id, id));
}

// The fields of the exception of a name without an id that depend on the code.
struct NameFailure {
  std::int32_t errorCode = 0;
  std::string detail;
};

bool operator==(const NameFailure& left, const NameFailure& right) {
  return left.errorCode == right.errorCode && left.detail == right.detail;
}

void PrintTo(const NameFailure& failure, std::ostream* out) {
  *out << "code " << failure.errorCode << ", detail " << failure.detail;
}

class TopoViewByTopoSubnetwork : public fakes::PlatformFixture {
 protected:
  CORBA::ULong view(const std::string& id) {
    return TopoManagementMgr::getViewInfoByTopoSubnetwork(nodes_,
                                                          fakes::nameOf("TopoSubnetwork", id));
  }

  // The labels of the nodes of a successful view.
  Lines viewOf(const std::string& id) {
    EXPECT_EQ(view(id), 0U);
    return labels();
  }

  Lines labels() {
    Lines result;
    for (CORBA::ULong i = 0; i < nodes_.length(); ++i) {
      result.emplace_back(nodes_[i].nativeEMSName.in());
    }
    return result;
  }

  // N1 and N2 in S, N3 in N1; S is in the root.
  static void fillNetwork() {
    network().nodes = {node("S", kRoot), node("N1", "S"), node("N2", "S"), node("N3", "N1")};
  }

  // Runs a view in which Name2Index fails. Expects an exception with the position of the
  // NbiException call; the line number is not fixed.
  NameFailure failureOf(CORBA::ULong code) {
    fakes::onCall("Name2Index", 1, fakes::giveCode(code));
    try {
      view("S");
      ADD_FAILURE() << "the view did not fail";
    } catch (const InterfaceNotExistException&) {
      ADD_FAILURE() << "the failure is not that of Name2Index";
    } catch (ProcessException& failure) {
      const std::string position = " at " + failure.file.str() + ":" +
                                   std::to_string(failure.line) + " " + failure.function.str();
      EXPECT_EQ(Journal::linesOf({"NbiException"}),
                Lines{"NbiException(" + std::to_string(failure.errorCode) + ")" + position});
      EXPECT_GT(failure.line, 0);
      EXPECT_EQ(failure.context.str(), "");
      EXPECT_EQ(failure.file.str(), "topomanagementmgr");
      EXPECT_EQ(failure.function.str(), "unknown");
      return {failure.errorCode, failure.detail.str()};
    }
    return {};
  }

  NodeList_T nodes_;
};

// --- The selected nodes.

TEST_F(TopoViewByTopoSubnetwork, ShowsEveryNodeBelowAtAnyDepth) {
  fillNetwork();
  EXPECT_EQ(viewOf("S"), (Lines{"N1", "N2", "N3"}));
}

TEST_F(TopoViewByTopoSubnetwork, ShowsTheNodesBelowAnInnerSubnetwork) {
  fillNetwork();
  EXPECT_EQ(viewOf("N1"), Lines{"N3"});
}

TEST_F(TopoViewByTopoSubnetwork, IsEmptyForASubnetworkWithoutDescendants) {
  fillNetwork();
  EXPECT_EQ(viewOf("N2"), Lines{});
  EXPECT_EQ(viewOf("N3"), Lines{});
}

TEST_F(TopoViewByTopoSubnetwork, IsEmptyForASubnetworkThatTheTopologyDoesNotHave) {
  fillNetwork();
  EXPECT_EQ(viewOf("elsewhere"), Lines{});
}

TEST_F(TopoViewByTopoSubnetwork, IsEmptyForAnEmptyDomain) {
  EXPECT_EQ(viewOf("S"), Lines{});
}

TEST_F(TopoViewByTopoSubnetwork, KeepsTheOrderOfTheDomain) {
  network().nodes = {node("N3", "N1"), node("N2", "S"), node("S", kRoot), node("N1", "S")};
  EXPECT_EQ(viewOf("S"), (Lines{"N3", "N2", "N1"}));
}

TEST_F(TopoViewByTopoSubnetwork, NeverShowsTheSubnetworkItself) {
  for (const char* parent : {kRoot, "0", "", "unknown"}) {
    network().nodes = {node("S", parent), node("N1", "S")};
    EXPECT_EQ(viewOf("S"), Lines{"N1"}) << parent;
  }
}

TEST_F(TopoViewByTopoSubnetwork, NeedsNoNodeForTheSubnetwork) {
  network().nodes = {node("N1", "S"), node("N2", "N1")};
  EXPECT_EQ(viewOf("S"), (Lines{"N1", "N2"}));
}

TEST_F(TopoViewByTopoSubnetwork, DoesNotShowNodesElsewhere) {
  fillNetwork();
  for (const char* parent : {kRoot, "0", "", "T", "unknown"}) {
    network().nodes.push_back(node(std::string("T") + parent, parent));
  }
  network().nodes.push_back(node("T", kRoot));
  EXPECT_EQ(viewOf("S"), (Lines{"N1", "N2", "N3"}));
}

TEST_F(TopoViewByTopoSubnetwork, ComparesIdsExactly) {
  network().nodes = {node("1", "s"), node("2", "S "), node("3", " S"), node("4", "SS"),
                     node("5", "")};
  EXPECT_EQ(viewOf("S"), Lines{});
}

TEST_F(TopoViewByTopoSubnetwork, ShowsElementsOfTheTopologyThatAreBelow) {
  fillNetwork();
  network().nodes.push_back(in("N3", element("NE=6", "Six")));
  network().nodes.push_back(in("", element("NE=7", "Seven")));
  EXPECT_EQ(viewOf("S"), (Lines{"N1", "N2", "N3", "Six"}));
}

TEST_F(TopoViewByTopoSubnetwork, NeverShowsElementsThatTheTopologyDoesNotHave) {
  fillNetwork();
  network().indexes = indexes({5, 6});
  EXPECT_EQ(viewOf("S"), (Lines{"N1", "N2", "N3"}));
  EXPECT_EQ(Journal::linesOf({"GetNEList"}), Lines{"GetNEList([0:5, 0:6])"});
}

TEST_F(TopoViewByTopoSubnetwork, FindsNothingBelowAnElementThatTheTopologyDoesNotHave) {
  network().nodes = {node("N1", "5"), node("N2", "N1")};
  network().indexes = indexes({5});
  EXPECT_EQ(viewOf("S"), Lines{});
  EXPECT_EQ(viewOf(""), (Lines{"N1", "N2", "NE-5"}));
}

TEST_F(TopoViewByTopoSubnetwork, ShowsNodesWithoutAParentForAnEmptyId) {
  fillNetwork();
  network().nodes.push_back(node("T", ""));
  network().nodes.push_back(node("U", "T"));
  network().indexes = indexes({5});
  EXPECT_EQ(TopoManagementMgr::getViewInfoByTopoSubnetwork(nodes_, {}), 0U);
  EXPECT_EQ(labels(), (Lines{"T", "U", "NE-5"}));
}

TEST_F(TopoViewByTopoSubnetwork, ShowsTheNodesBelowARequestedRootMarker) {
  network().nodes = {node("N1", "0"), node("N2", "N1"), node("N3", kRoot), node("N4", "N3")};
  EXPECT_EQ(viewOf("0"), (Lines{"N1", "N2"}));
  EXPECT_EQ(viewOf(kRoot), (Lines{"N3", "N4"}));
}

TEST_F(TopoViewByTopoSubnetwork, StopsAtARootMarkerThatIsANode) {
  network().nodes = {node(kRoot, "S"), node("N1", kRoot), node("0", "S"), node("N2", "0")};
  EXPECT_EQ(viewOf("S"), Lines{kRoot});  // the conversion of the node "0" fails
}

TEST_F(TopoViewByTopoSubnetwork, UsesTheFirstOfSeveralNodesWithOneId) {
  network().nodes = {node("D", "S"),   node("D", kRoot), node("N1", "D"),
                     node("E", kRoot), node("E", "S"),   node("N2", "E")};
  EXPECT_EQ(viewOf("S"), (Lines{"D", "N1", "E"}));
  EXPECT_EQ(fieldsOf(nodes_[2]), (NodeFields{"[EMS=EMS-1, TopoSubnetwork=E]", "E", 1, 0, 0,
                                             "[EMS=EMS-1, TopoSubnetwork=S]"}));
}

TEST_F(TopoViewByTopoSubnetwork, ShowsASubnetworkThatIsBelowItself) {
  network().nodes = {node("S", "N1"), node("N1", "S"), node("N2", "N1")};
  EXPECT_EQ(viewOf("S"), (Lines{"S", "N1", "N2"}));
  network().nodes = {node("S", "S"), node("N1", "S")};
  EXPECT_EQ(viewOf("S"), (Lines{"S", "N1"}));
}

TEST_F(TopoViewByTopoSubnetwork, DoesNotShowCyclesElsewhere) {
  fillNetwork();
  for (const TopoNode_T& each : {node("own", "own"), node("x", "y"), node("y", "x"),
                                 node("behind", "x"), node("N4", "N3")}) {
    network().nodes.push_back(each);
  }
  EXPECT_EQ(viewOf("S"), (Lines{"N1", "N2", "N3", "N4"}));
}

TEST_F(TopoViewByTopoSubnetwork, ShowsTwentyThousandNestedSubnetworks) {
  constexpr int kDepth = 20000;
  for (int i = kDepth; i > 0; --i) {
    network().nodes.push_back(
        node("n" + std::to_string(i), i == 1 ? "S" : "n" + std::to_string(i - 1)));
  }
  EXPECT_EQ(view("S"), 0U);
  EXPECT_EQ(nodes_.length(), static_cast<CORBA::ULong>(kDepth));
}

// --- The records of the nodes.

TEST_F(TopoViewByTopoSubnetwork, MakesTheSameNodesAsTheProtectView) {
  fillNetwork();
  network().nodes[1].attribute3 = 3;
  network().nodes[1].attribute4 = -4;
  network().nodes[1].extendedAttributes.emplace_back("key", "Hall||3");
  network().nodes.push_back(in("N1", element("NE=6", "Six")));
  for (const bool testSwitch : {false, true}) {
    fakes::agent().testSwitch = testSwitch;
    EXPECT_EQ(viewOf("S"), (Lines{"N1", "N2", "N3", "Six"}));
    NodeList_T all;
    EXPECT_EQ(TopoManagementMgr::getProtectSubnetworkViewInfo(all), 0U);
    ASSERT_EQ(all.length(), 5U);
    for (CORBA::ULong i = 0; i < nodes_.length(); ++i) {
      EXPECT_EQ(fieldsOf(nodes_[i]), fieldsOf(all[i + 1]));
    }
  }
}

TEST_F(TopoViewByTopoSubnetwork, GivesNodesOnlyTheVendorInTestMode) {
  fillNetwork();
  fakes::agent().testSwitch = true;
  EXPECT_EQ(viewOf("N1"), Lines{"N3"});
  EXPECT_EQ(fieldsOf(nodes_[0]), (NodeFields{"[EMS=EMS-1, TopoSubnetwork=N3]", "N3", 1, 0, 0,
                                             "[EMS=EMS-1, TopoSubnetwork=N1]",
                                             "[Vendor=KORVANE TECHNOLOGIES CO., LTD]"}));
}

TEST_F(TopoViewByTopoSubnetwork, LeavesOutNodesThatDoNotConvert) {
  fillNetwork();
  network().nodes[1].nodeType = 3;
  EXPECT_EQ(viewOf("S"), (Lines{"N2", "N3"}));  // N3 is below N1, whose conversion fails
  fakes::resetJournal();
  fakes::onCall("ConvertTopoNodeIdToName", 1, fakes::giveCode(9));
  EXPECT_EQ(viewOf("S"), Lines{"N3"});
  EXPECT_EQ(loggedErrorWithoutLine(), "0 errors");
}

TEST_F(TopoViewByTopoSubnetwork, ReplacesTheContentOfTheList) {
  fillNetwork();
  topo::setLength(nodes_, 7);
  EXPECT_EQ(viewOf("N1"), Lines{"N3"});
}

// --- The calls.

TEST_F(TopoViewByTopoSubnetwork, CollectsThenAsksForTheIdThenConverts) {
  fillNetwork();
  network().indexes = indexes({5});
  EXPECT_EQ(viewOf("N1"), Lines{"N3"});
  EXPECT_EQ(
      Journal::lines(),
      (Lines{"CheckIFBuf(\"DomainInterface\")", "GetFacet(\"CORBA\")", "GetTopoData()",
             "GetAllTopoNodes()", "GetNEData()", "GetNEIndexList(false)", "GetNEIndexList(true)",
             "GetTestSwitch()", "GetNEData()", "GetNEList([0:5])",
             "CheckIFBuf(\"CorbaUtilInterface\")", "Name2Index([EMS=EMS-1, TopoSubnetwork=N1])",
             "CheckIFBuf(\"CorbaUtilInterface\")", "ConvertTopoNodeIdToName(\"N3\")",
             "CheckIFBuf(\"CorbaUtilInterface\")", "ConvertTopoNodeIdToName(\"N1\")",
             "GetTestSwitch()"}));
}

TEST_F(TopoViewByTopoSubnetwork, AsksForTheIndexListsInTestModeToo) {
  fillNetwork();
  network().indexes = indexes({5});
  fakes::agent().testSwitch = true;
  EXPECT_EQ(viewOf("N2"), Lines{});
  EXPECT_EQ(Journal::lines(),
            (Lines{"CheckIFBuf(\"DomainInterface\")", "GetFacet(\"CORBA\")", "GetTopoData()",
                   "GetAllTopoNodes()", "GetNEData()", "GetNEIndexList(false)",
                   "GetNEIndexList(true)", "GetTestSwitch()", "CheckIFBuf(\"CorbaUtilInterface\")",
                   "Name2Index([EMS=EMS-1, TopoSubnetwork=N2])"}));
}

TEST_F(TopoViewByTopoSubnetwork, UsesTheIdOfName2Index) {
  fillNetwork();
  fakes::corbaUtilAnswers().idOfName = "N1";
  EXPECT_EQ(viewOf("whatever"), Lines{"N3"});
}

// --- The name has no id.

TEST_F(TopoViewByTopoSubnetwork, RaisesTheCodeOfANameWithoutAnId) {
  fillNetwork();
  EXPECT_EQ(failureOf(7), (NameFailure{7,
                                       "ErrCode:7,Detail:TopoManagementMgr::"
                                       "getViewInfoByTopoSubnetwork, Name2Index Error!!"}));
  fakes::resetJournal();
  EXPECT_EQ(failureOf(5), (NameFailure{5,
                                       "ErrCode:5,Detail:TopoManagementMgr::"
                                       "getViewInfoByTopoSubnetwork, Name2Index Error!!"}));
}

TEST_F(TopoViewByTopoSubnetwork, WritesTheCodeOfANameWithoutAnIdAsASignedNumber) {
  EXPECT_EQ(failureOf(4000000000),
            (NameFailure{-294967296,
                         "ErrCode:-294967296,Detail:TopoManagementMgr::"
                         "getViewInfoByTopoSubnetwork, Name2Index Error!!"}));
}

TEST_F(TopoViewByTopoSubnetwork, ReportsTheFailureBeforeRaisingIt) {
  fillNetwork();
  failureOf(7);
  const std::vector<fakes::ReportedFailure> reported = fakes::reportedFailures();
  ASSERT_EQ(reported.size(), 1U);
  EXPECT_EQ(reported[0].errorCode, 7);
  EXPECT_EQ(reported[0].file, "topomanagementmgr");
  EXPECT_EQ(reported[0].function, "unknown");
  EXPECT_EQ(reported[0].context, "");
  EXPECT_EQ(reported[0].detail,
            "ErrCode:7,Detail:TopoManagementMgr::getViewInfoByTopoSubnetwork, Name2Index Error!!");
}

TEST_F(TopoViewByTopoSubnetwork, ReportsTheFailureAtTheModulesLogPosition) {
  fillNetwork();
  fakes::onCall("GetNEData", 1, fakes::raiseProcessException(3));  // sets the log position
  failureOf(7);
  const Lines logged = Journal::linesOf({"TaDebugWithPara", "NbiException"});
  ASSERT_EQ(logged.size(), 2U);
  EXPECT_EQ(logged[1].substr(0, logged[1].rfind(':')), "NbiException(7) at topomanagementmgr");
  EXPECT_NE(logged[0].substr(logged[0].rfind(':')), logged[1].substr(logged[1].rfind(':')));
}

TEST_F(TopoViewByTopoSubnetwork, ShowsNothingWhenTheNameHasNoId) {
  fillNetwork();
  failureOf(7);
  EXPECT_EQ(nodes_.length(), 0U);
  const Lines lines = Journal::lines();
  ASSERT_GE(lines.size(), 2U);
  EXPECT_EQ(lines[lines.size() - 2], "Name2Index([EMS=EMS-1, TopoSubnetwork=S])");
  EXPECT_EQ(Journal::count("GetAllTopoNodes"), 1);
  EXPECT_EQ(loggedErrorWithoutLine(), "0 errors");
}

// --- Other failures.

TEST_F(TopoViewByTopoSubnetwork, SucceedsWithoutNodesWhenTheTopologyCannotBeRead) {
  fillNetwork();
  for (const char* query : {"GetFacet", "GetTopoData", "GetAllTopoNodes"}) {
    fakes::resetJournal();
    fakes::onCall(query, 1, fakes::raiseProcessException(77));
    EXPECT_EQ(viewOf("S"), Lines{}) << query;
    EXPECT_EQ(loggedErrorWithoutLine(), caughtBy(kCollection, "77")) << query;
    EXPECT_EQ(Journal::count("Name2Index"), 1) << query;
  }
}

TEST_F(TopoViewByTopoSubnetwork, SucceedsWithTheNodesCollectedBeforeAFailure) {
  fillNetwork();
  network().indexes = indexes({5});
  for (const char* query : {"GetAllTopoNodes late", "GetNEData", "GetNEIndexList",
                            "GetNEIndexList late", "GetNEList", "GetNEList late"}) {
    for (const std::int32_t code : {77, 0, -5}) {
      fakes::resetJournal();
      fakes::onCall(query, 1, fakes::raiseProcessException(code));
      EXPECT_EQ(viewOf("S"), (Lines{"N1", "N2", "N3"})) << query;
      EXPECT_EQ(loggedErrorWithoutLine(), caughtBy(kCollection, std::to_string(code))) << query;
    }
  }
}

TEST_F(TopoViewByTopoSubnetwork, SucceedsWithoutNodesWhenTheDomainIsMissing) {
  fakes::openBuffer("DomainInterface").Remove(&fakes::domainInterface());
  EXPECT_EQ(viewOf("S"), Lines{});
  EXPECT_EQ(loggedErrorWithoutLine(), caughtBy(kCollection, "1092091908"));
}

TEST_F(TopoViewByTopoSubnetwork, RaisesTheFailureOfTheNameAfterAFailedCollection) {
  fakes::onCall("GetAllTopoNodes", 1, fakes::raiseProcessException(77));
  EXPECT_EQ(failureOf(7).errorCode, 7);
  EXPECT_EQ(loggedErrorWithoutLine(), caughtBy(kCollection, "77"));
}

TEST_F(TopoViewByTopoSubnetwork, ThrowsWhenTheUtilityIsMissing) {
  fillNetwork();
  fakes::openBuffer("CorbaUtilInterface").Remove(&fakes::corbaUtil());
  EXPECT_THROW(view("S"), InterfaceNotExistException);
  EXPECT_EQ(Journal::count("GetAllTopoNodes"), 1);
  EXPECT_EQ(Journal::linesOf({"TaDebug", "TaDebugWithPara", "NbiException", "Name2Index"}),
            Lines{});
}

TEST_F(TopoViewByTopoSubnetwork, PassesOnEveryOtherException) {
  fillNetwork();
  network().indexes = indexes({5});
  for (const char* call : {"GetFacet", "GetTopoData", "GetAllTopoNodes", "GetNEIndexList",
                           "GetNEList", "Name2Index", "ConvertTopoNodeIdToName"}) {
    fakes::resetJournal();
    fakes::onCall(call, 1, fakes::raiseRuntimeError("broken"));
    EXPECT_THROW(view("S"), std::runtime_error) << call;
    fakes::resetJournal();
    fakes::onCall(call, 1, fakes::raiseBadAlloc());
    EXPECT_THROW(view("S"), std::bad_alloc) << call;
    fakes::resetJournal();
    fakes::onCall(call, 1, fakes::raiseTransient());
    EXPECT_THROW(view("S"), CORBA::TRANSIENT) << call;
    EXPECT_EQ(Journal::linesOf({"TaDebugWithPara", "NbiException"}), Lines{}) << call;
  }
}

// --- One chain of parents.

bool isBelow(const std::string& subnetworkId, const std::string& parentId, const Nodes& nodes) {
  return TopoManagementMgr::isBelowTopoSubnetwork(subnetworkId, parentId, nodes);
}

TEST(TopoParentChain, LeadsToASubnetworkThatIsTheParent) {
  EXPECT_TRUE(isBelow("S", "S", {}));
  EXPECT_TRUE(isBelow("S", "S", {node("S", kRoot)}));
}

TEST(TopoParentChain, LeadsToASubnetworkThroughOthers) {
  const Nodes nodes = {node("C", "B"), node("A", "S"), node("B", "A"), node("S", kRoot)};
  EXPECT_TRUE(isBelow("S", "C", nodes));
  EXPECT_TRUE(isBelow("A", "C", nodes));
  EXPECT_FALSE(isBelow("C", "A", nodes));
}

TEST(TopoParentChain, EndsAtRootMarkers) {
  for (const char* marker : {"0", kRoot}) {
    EXPECT_FALSE(isBelow("S", marker, {node(marker, "S")})) << marker;
    EXPECT_FALSE(isBelow("S", "A", {node("A", marker), node(marker, "S")})) << marker;
  }
}

TEST(TopoParentChain, ComparesWithTheSubnetworkBeforeTheRootMarkers) {
  for (const char* marker : {"0", kRoot}) {
    EXPECT_TRUE(isBelow(marker, marker, {})) << marker;
    EXPECT_TRUE(isBelow(marker, "A", {node("A", marker)})) << marker;
  }
}

TEST(TopoParentChain, TakesNoOtherTextForARootMarker) {
  for (const char* id : {"", "00", " 0", "qnmap_phy_submap", "QNMAP_PHY_SUBMAP "}) {
    EXPECT_TRUE(isBelow("S", id, {node(id, "S")})) << id;
  }
}

TEST(TopoParentChain, EndsWithoutNodes) {
  EXPECT_FALSE(isBelow("S", "A", {}));
  EXPECT_FALSE(isBelow("S", "", {}));
}

TEST(TopoParentChain, EndsAtAParentThatIsNoNode) {
  EXPECT_FALSE(isBelow("S", "B", {node("A", "S")}));
  EXPECT_FALSE(isBelow("S", "A", {node("A", "B"), node("C", "S")}));
}

TEST(TopoParentChain, UsesTheFirstOfSeveralNodesWithOneId) {
  EXPECT_TRUE(isBelow("S", "A", {node("A", "S"), node("A", kRoot)}));
  EXPECT_FALSE(isBelow("S", "A", {node("A", kRoot), node("A", "S")}));
}

TEST(TopoParentChain, EndsInACycle) {
  EXPECT_FALSE(isBelow("S", "A", {node("A", "A")}));
  EXPECT_FALSE(isBelow("S", "A", {node("A", "B"), node("B", "A")}));
  EXPECT_FALSE(isBelow("S", "C", {node("C", "B"), node("A", "B"), node("B", "A")}));
}

TEST(TopoParentChain, FindsASubnetworkInACycle) {
  const Nodes nodes = {node("A", "B"), node("B", "S"), node("S", "A")};
  EXPECT_TRUE(isBelow("S", "A", nodes));
  EXPECT_TRUE(isBelow("S", "S", nodes));
  EXPECT_TRUE(isBelow("B", "S", nodes));
}

TEST(TopoParentChain, PassesNodesOfEveryType) {
  TopoNode_T unknown = node("A", "S");
  unknown.nodeType = 9;
  EXPECT_TRUE(isBelow("S", "A", {unknown}));
}

}  // namespace
