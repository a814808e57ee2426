#include <filesystem>
#include <map>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "tests/fakes/Fixture.h"
#include "tests/fakes/Records.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/unit/topomanagementmgr/LoggedError.h"
#include "topo/Holder.h"
#include "topo/TmfRecords.h"
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

constexpr const char* kCollection = "getTopoSubnetworkViewBaseInfo";
constexpr const char* kVendor = "Vendor=KORVANE TECHNOLOGIES CO., LTD";

TopoNode_T withAttribute(TopoNode_T node, const std::string& value) {
  node.extendedAttributes.emplace_back("key", value);
  return node;
}

// The calls of domain queries.
Lines domainCalls() {
  return Journal::linesOf(
      {"GetFacet", "GetTopoData", "GetAllTopoNodes", "GetNEData", "GetNEIndexList", "GetNEList"});
}

const Lines kTopoCalls = {"GetFacet(\"CORBA\")", "GetTopoData()", "GetAllTopoNodes()"};
const Lines kIndexCalls = {"GetNEData()", "GetNEIndexList(false)", "GetNEIndexList(true)"};

Lines operator+(Lines left, const Lines& right) {
  left.insert(left.end(), right.begin(), right.end());
  return left;
}

class TopoSubnetworkView : public fakes::PlatformFixture {
 protected:
  CORBA::ULong view() { return TopoManagementMgr::getTopoSubnetworkViewInfo(nodes_); }

  // Three topology nodes; elements 5, 6, 7, of which the topology shows 6.
  void fillNetwork() {
    network().nodes = {subnetwork("a", "A"), subnetwork("b", "B"), element("NE=6", "Six")};
    network().indexes = indexes({5, 6, 7});
    network().shownIndexes = indexes({6});
  }

  // Runs the view in test mode with one subnetwork that has one extended attribute.
  std::string placementInTestMode(const std::string& attribute) {
    network().nodes = {withAttribute(subnetwork("a"), attribute)};
    fakes::agent().testSwitch = true;
    EXPECT_EQ(view(), 0U);
    const auto& info = topo::at(nodes_, 0).additionalInfo;
    return std::string(info[2].name.in()) + "=" + info[2].value.in() + " " + info[3].name.in() +
           "=" + info[3].value.in();
  }

  NodeList_T nodes_;
};

// --- Test switch off.

TEST_F(TopoSubnetworkView, AppendsOneNodePerNetworkElementNotExcluded) {
  fillNetwork();
  EXPECT_EQ(view(), 0U);
  EXPECT_EQ(fakes::labelsOf(nodes_), (Lines{"A", "B", "Six", "NE-5", "NE-7"}));
  for (const CORBA::ULong i : {3U, 4U}) {
    EXPECT_EQ(nodes_[i].nodeType, 0U);
    EXPECT_EQ(nodes_[i].nodeParam1, 100);
    EXPECT_EQ(nodes_[i].nodeParam2, 100);
    EXPECT_EQ(nodes_[i].relatedName.length(), 0U);
    EXPECT_EQ(nodes_[i].additionalInfo.length(), 0U);
  }
  EXPECT_EQ(printed(nodes_[3].name), "[EMS=EMS-1, ManagedElement=5]");
  EXPECT_EQ(printed(nodes_[4].name), "[EMS=EMS-1, ManagedElement=7]");
}

TEST_F(TopoSubnetworkView, WritesElementNumbersAsSignedDecimalText) {
  network().indexes = indexes({5, -12, 2147483647});
  EXPECT_EQ(view(), 0U);
  EXPECT_EQ(Journal::linesOf({"GetMoc"}),
            (Lines{"GetMoc(\"5\")", "GetMoc(\"-12\")", "GetMoc(\"2147483647\")"}));
}

TEST_F(TopoSubnetworkView, LeavesOutElementZeroAndShowsNegativeNumbers) {
  network().indexes = indexes({-5, 0, 7, -2147483647 - 1});
  EXPECT_EQ(view(), 0U);
  EXPECT_EQ(fakes::labelsOf(nodes_), (Lines{"NE--5", "NE-7", "NE--2147483648"}));
  EXPECT_EQ(printed(nodes_[0].name), "[EMS=EMS-1, ManagedElement=-5]");
  EXPECT_EQ(printed(nodes_[2].name), "[EMS=EMS-1, ManagedElement=-2147483648]");
  EXPECT_EQ(Journal::count("TaDebugWithPara"), 1);  // object id 0
}

TEST_F(TopoSubnetworkView, AsksTheDomainInThisOrder) {
  fillNetwork();
  view();
  EXPECT_EQ(domainCalls(),
            (kTopoCalls + kIndexCalls + Lines{"GetNEData()", "GetNEList([0:5, 0:7])"}));
}

TEST_F(TopoSubnetworkView, LooksUpTheDomainOnceAndReadsTheSwitchAfterTheTopology) {
  fillNetwork();
  view();
  const Lines lines = Journal::lines();
  ASSERT_GT(lines.size(), 6U);
  EXPECT_EQ(Lines(lines.begin(), lines.begin() + 6),
            (Lines{"CheckIFBuf(\"DomainInterface\")", "GetFacet(\"CORBA\")", "GetTopoData()",
                   "GetAllTopoNodes()", "GetTestSwitch()", "GetNEData()"}));
}

TEST_F(TopoSubnetworkView, CarriesTheFirstFieldOfAnIndexUnchanged) {
  network().indexes = {fakes::index(5, 77)};
  view();
  EXPECT_EQ(Journal::linesOf({"GetNEList"}), Lines{"GetNEList([77:5])"});
}

TEST_F(TopoSubnetworkView, KeepsDuplicatesOfTheElementList) {
  network().indexes = indexes({5, 5, 6});
  network().shownIndexes = indexes({6, 6});
  EXPECT_EQ(view(), 0U);
  EXPECT_EQ(fakes::labelsOf(nodes_), (Lines{"NE-5", "NE-5"}));
}

TEST_F(TopoSubnetworkView, MakesNodesOfTheReceivedElements) {
  network().indexes = indexes({5, 6, 7});
  network().elements = {fakes::elementRecord(fakes::index(9)),
                        fakes::elementRecord(fakes::index(8))};
  EXPECT_EQ(view(), 0U);
  EXPECT_EQ(Journal::linesOf({"GetNEList"}), Lines{"GetNEList([0:5, 0:6, 0:7])"});
  ASSERT_EQ(fakes::labelsOf(nodes_), (Lines{"NE-9", "NE-8"}));
  EXPECT_EQ(printed(nodes_[0].name), "[EMS=EMS-1, ManagedElement=9]");
  EXPECT_EQ(printed(nodes_[1].name), "[EMS=EMS-1, ManagedElement=8]");
}

TEST_F(TopoSubnetworkView, AddsNothingWhenNoElementIsReceived) {
  fillNetwork();
  network().elements.emplace();
  EXPECT_EQ(view(), 0U);
  EXPECT_EQ(fakes::labelsOf(nodes_), (Lines{"A", "B", "Six"}));
}

TEST_F(TopoSubnetworkView, DoesNotReadElementsWhenTheTopologyShowsThemAll) {
  fillNetwork();
  network().shownIndexes = indexes({7, 6, 5});
  EXPECT_EQ(view(), 0U);
  EXPECT_EQ(fakes::labelsOf(nodes_), (Lines{"A", "B", "Six"}));
  EXPECT_EQ(domainCalls(), kTopoCalls + kIndexCalls);
}

TEST_F(TopoSubnetworkView, IsEmptyForAnEmptyDomain) {
  EXPECT_EQ(view(), 0U);
  EXPECT_EQ(nodes_.length(), 0U);
}

TEST_F(TopoSubnetworkView, ShowsElementsOfADomainWithoutTopology) {
  network().indexes = indexes({5});
  EXPECT_EQ(view(), 0U);
  EXPECT_EQ(fakes::labelsOf(nodes_), Lines{"NE-5"});
}

TEST_F(TopoSubnetworkView, LeavesOutNodesThatDoNotConvert) {
  fillNetwork();
  network().nodes[1].nodeType = 3;
  EXPECT_EQ(view(), 0U);
  EXPECT_EQ(fakes::labelsOf(nodes_), (Lines{"A", "Six", "NE-5", "NE-7"}));
  EXPECT_EQ(loggedErrorWithoutLine(), "0 errors");
}

TEST_F(TopoSubnetworkView, LeavesOutElementsThatDoNotConvert) {
  fillNetwork();
  fakes::onCall("ConvertNEIndexToName", 2, fakes::giveCode(9));  // the first call is for Six
  EXPECT_EQ(view(), 0U);
  EXPECT_EQ(fakes::labelsOf(nodes_), (Lines{"A", "B", "Six", "NE-7"}));
}

TEST_F(TopoSubnetworkView, AddsNoAttributesOutsideTestMode) {
  network().nodes = {withAttribute(subnetwork("a"), "Hall4||3")};
  EXPECT_EQ(view(), 0U);
  EXPECT_EQ(nodes_[0].additionalInfo.length(), 0U);
}

TEST_F(TopoSubnetworkView, ReadsTheDomainInEveryView) {
  network().nodes = {subnetwork("a", "A")};
  view();
  network().nodes = {subnetwork("b", "B")};
  NodeList_T second;
  EXPECT_EQ(TopoManagementMgr::getTopoSubnetworkViewInfo(second), 0U);
  EXPECT_STREQ(second[0].nativeEMSName.in(), "B");
  EXPECT_EQ(Journal::count("GetAllTopoNodes"), 2);
}

// --- Test switch on.

TEST_F(TopoSubnetworkView, AddsNoElementsInTestMode) {
  fillNetwork();
  fakes::agent().testSwitch = true;
  EXPECT_EQ(view(), 0U);
  EXPECT_EQ(fakes::labelsOf(nodes_), (Lines{"A", "B", "Six"}));
  EXPECT_EQ(domainCalls(), kTopoCalls);
}

TEST_F(TopoSubnetworkView, GivesSubnetworksSevenPairsInTestMode) {
  fillNetwork();
  fakes::agent().testSwitch = true;
  EXPECT_EQ(view(), 0U);
  for (const CORBA::ULong i : {0U, 1U}) {
    EXPECT_EQ(printed(nodes_[i].additionalInfo),
              std::string("[") + kVendor + ", userLabel=, Location=, TopoType=, " + kVendor +
                  ", SubnetworkBandWidth=, layerRate=]");
  }
}

TEST_F(TopoSubnetworkView, GivesElementsOnlyTheVendorInTestMode) {
  fillNetwork();
  network().nodes[2] = withAttribute(network().nodes[2], "Hall4||3");
  fakes::agent().testSwitch = true;
  EXPECT_EQ(view(), 0U);
  EXPECT_EQ(printed(nodes_[2].additionalInfo), std::string("[") + kVendor + "]");
}

TEST_F(TopoSubnetworkView, SplitsLocationAndType) {
  EXPECT_EQ(placementInTestMode("Hall4||3"), "Location=Hall4 TopoType=Ring");
}

TEST_F(TopoSubnetworkView, CallsAnyOtherCodeUnknown) {
  for (const char* code : {"9", "8", "", "03", " 3", "3 ", "-1", "1||2", "a"}) {
    EXPECT_EQ(placementInTestMode(std::string("Hall4||") + code), "Location=Hall4 TopoType=Unknown")
        << code;
  }
}

TEST_F(TopoSubnetworkView, RecognisesAllTopologyTypes) {
  const Lines names = {"Net",          "Tree",        "Star", "Ring",
                       "SingleDevice", "Point2Point", "Line", "Hybrid"};
  for (std::size_t code = 0; code < names.size(); ++code) {
    EXPECT_EQ(placementInTestMode("Hall4||" + std::to_string(code)),
              "Location=Hall4 TopoType=" + names[code]);
  }
}

TEST_F(TopoSubnetworkView, TakesAnAttributeWithoutSeparatorAsTheLocation) {
  EXPECT_EQ(placementInTestMode("Hall4"), "Location=Hall4 TopoType=");
  EXPECT_EQ(placementInTestMode("Hall4|3"), "Location=Hall4|3 TopoType=");
  EXPECT_EQ(placementInTestMode(""), "Location= TopoType=");
}

TEST_F(TopoSubnetworkView, TreatsASeparatorWithoutATypeAsAnUnknownType) {
  EXPECT_EQ(placementInTestMode("||"), "Location= TopoType=Unknown");
}

TEST_F(TopoSubnetworkView, SplitsAtTheFirstSeparator) {
  EXPECT_EQ(placementInTestMode("Hall4||1||2"), "Location=Hall4 TopoType=Unknown");
  EXPECT_EQ(placementInTestMode("Hall4|||3"), "Location=Hall4 TopoType=Unknown");
}

TEST_F(TopoSubnetworkView, ReadsTheValueOfTheFirstAttributeOnly) {
  network().nodes = {withAttribute(withAttribute(subnetwork("a"), "First||1"), "Second||2")};
  fakes::agent().testSwitch = true;
  EXPECT_EQ(view(), 0U);
  EXPECT_STREQ(nodes_[0].additionalInfo[2].value.in(), "First");
}

TEST_F(TopoSubnetworkView, PairsNodesAndAttributesByPosition) {
  TopoNode_T unknown = withAttribute(subnetwork("x", "X"), "Dropped||0");
  unknown.nodeType = 3;
  network().nodes = {withAttribute(subnetwork("a", "A"), "HallA||1"), unknown,
                     withAttribute(subnetwork("c", "C"), "HallC||2")};
  fakes::agent().testSwitch = true;
  EXPECT_EQ(view(), 0U);
  ASSERT_EQ(fakes::labelsOf(nodes_), (Lines{"A", "C"}));
  EXPECT_STREQ(nodes_[0].additionalInfo[2].value.in(), "HallA");
  EXPECT_STREQ(nodes_[1].additionalInfo[2].value.in(), "Dropped");
  EXPECT_STREQ(nodes_[1].additionalInfo[3].value.in(), "Net");
}

TEST_F(TopoSubnetworkView, IsEmptyForAnEmptyDomainInTestMode) {
  fakes::agent().testSwitch = true;
  EXPECT_EQ(view(), 0U);
  EXPECT_EQ(nodes_.length(), 0U);
}

TEST_F(TopoSubnetworkView, RaisesBadParamForASubnetworkWithoutAName) {
  network().nodes = {subnetwork("a")};
  fakes::corbaUtilAnswers().emptyTopoNodeNames = true;
  fakes::agent().testSwitch = true;
  EXPECT_THROW(view(), CORBA::BAD_PARAM);
}

TEST_F(TopoSubnetworkView, AcceptsANodeWithoutANameOutsideTestMode) {
  network().nodes = {subnetwork("a", "A")};
  fakes::corbaUtilAnswers().emptyTopoNodeNames = true;
  EXPECT_EQ(view(), 0U);
  EXPECT_EQ(fakes::labelsOf(nodes_), Lines{"A"});
}

TEST_F(TopoSubnetworkView, ReadsTheTestSwitchAfreshAtEveryUse) {
  network().nodes = {subnetwork("a")};
  // By the collection, by the view, by the conversion of the node.
  fakes::agent().testSwitchAnswers = {false, false, false};
  view();
  EXPECT_EQ(Journal::count("GetTestSwitch"), 3);
}

TEST_F(TopoSubnetworkView, FollowsASwitchThatIsTurnedOnDuringTheView) {
  network().nodes = {subnetwork("a", "A")};
  network().indexes = indexes({5});
  fakes::agent().testSwitchAnswers = {false, true, true, true};
  EXPECT_EQ(view(), 0U);
  EXPECT_EQ(fakes::labelsOf(nodes_), (Lines{"A", "NE-5"}));
  EXPECT_EQ(nodes_[0].additionalInfo.length(), 7U);
  EXPECT_EQ(nodes_[1].additionalInfo.length(), 1U);
}

TEST_F(TopoSubnetworkView, FollowsASwitchThatIsTurnedOffDuringTheView) {
  network().nodes = {subnetwork("a", "A")};
  network().indexes = indexes({5});
  fakes::agent().testSwitchAnswers = {true, false, false};
  EXPECT_EQ(view(), 0U);
  EXPECT_EQ(fakes::labelsOf(nodes_), Lines{"A"});
  EXPECT_EQ(nodes_[0].additionalInfo.length(), 0U);
}

TEST_F(TopoSubnetworkView, ReadsTheSwitchForItsAttributesBeforeItConverts) {
  network().nodes = {subnetwork("a", "A")};
  fakes::agent().testSwitchAnswers = {true, false, true};
  EXPECT_EQ(view(), 0U);
  EXPECT_EQ(nodes_[0].additionalInfo.length(), 1U);
}

TEST_F(TopoSubnetworkView, CreatesNoFileForItsUserLabels) {
  const support::TemporaryDirectory dir;
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(dir.path());
  network().nodes = {subnetwork("a")};
  fakes::agent().testSwitch = true;
  EXPECT_EQ(view(), 0U);
  std::filesystem::current_path(before);
  EXPECT_TRUE(std::filesystem::is_empty(dir.path()));
}

TEST_F(TopoSubnetworkView, MayRunInManyThreadsInTestMode) {
  network().nodes = std::vector<TopoNode_T>(20, withAttribute(subnetwork("a"), "Hall||3"));
  fakes::agent().testSwitch = true;
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([] {
      NodeList_T nodes;
      EXPECT_EQ(TopoManagementMgr::getTopoSubnetworkViewInfo(nodes), 0U);
      ASSERT_EQ(nodes.length(), 20U);
      EXPECT_STREQ(nodes[19].additionalInfo[3].value.in(), "Ring");
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
}

// --- Attributes, step by step.

class TopoNodeAttributes : public fakes::PlatformFixture {
 protected:
  TopoNodeAttributes() {
    topo::setLength(nodes_, 1);
    nodes_[0].nodeType = 1;
    nodes_[0].name = fakes::nameOf("TopoSubnetwork", "a");
  }

  void add(const std::vector<TopoNode_T>& domainNodes) {
    TopoManagementMgr::addNodeAttributes(nodes_, domainNodes, [this](const std::string& key) {
      asked_.push_back(key);
      return labels_[key];
    });
  }

  NodeList_T nodes_;
  std::map<std::string, std::string> labels_;
  std::vector<std::string> asked_;
};

TEST_F(TopoNodeAttributes, TakeThreeValuesUnderTheLastNameValueAndTheirName) {
  labels_ = {{"auserLabel", "Main"}, {"aSubnetworkBandWidth", "10G"}, {"alayerRate", "5"}};
  add({});
  EXPECT_EQ(printed(nodes_[0].additionalInfo), std::string("[userLabel=Main, Location=, ") +
                                                   "TopoType=, " + kVendor +
                                                   ", SubnetworkBandWidth=10G, layerRate=5]");
  EXPECT_EQ(asked_, (std::vector<std::string>{"auserLabel", "aSubnetworkBandWidth", "alayerRate"}));
}

TEST_F(TopoNodeAttributes, KeepNoValueOfThePreviousNode) {
  topo::setLength(nodes_, 2);
  nodes_[1].nodeType = 1;
  nodes_[1].name = fakes::nameOf("TopoSubnetwork", "b");
  labels_ = {{"auserLabel", "Main"}, {"aSubnetworkBandWidth", "10G"}, {"alayerRate", "5"}};
  add({});
  EXPECT_EQ(printed(nodes_[1].additionalInfo), std::string("[userLabel=, Location=, TopoType=, ") +
                                                   kVendor + ", SubnetworkBandWidth=, layerRate=]");
}

TEST_F(TopoNodeAttributes, AreNotLookedUpForElements) {
  nodes_[0].nodeType = 0;
  add({});
  EXPECT_TRUE(asked_.empty());
  EXPECT_EQ(nodes_[0].additionalInfo.length(), 0U);
}

TEST_F(TopoNodeAttributes, AreAppendedToExistingPairs) {
  topo::setLength(nodes_[0].additionalInfo, 2);
  topo::setPair(nodes_[0].additionalInfo, 0, "n0", "v0");
  topo::setPair(nodes_[0].additionalInfo, 1, "n1", "v1");
  add({withAttribute(subnetwork("a"), "Hall||6")});
  EXPECT_EQ(printed(nodes_[0].additionalInfo),
            std::string("[n0=v0, n1=v1, userLabel=, Location=Hall, TopoType=Line, ") + kVendor +
                ", SubnetworkBandWidth=, layerRate=]");
}

TEST_F(TopoNodeAttributes, AreEmptyForANodeBehindTheDomainNodes) {
  add({});
  EXPECT_EQ(printed(nodes_[0].additionalInfo), std::string("[userLabel=, Location=, TopoType=, ") +
                                                   kVendor + ", SubnetworkBandWidth=, layerRate=]");
}

TEST_F(TopoNodeAttributes, AreAddedToNodesOfTypeOneOnly) {
  for (const CORBA::ULong type : {0U, 2U}) {
    nodes_[0].nodeType = type;
    add({withAttribute(subnetwork("a"), "Hall||6")});
    EXPECT_EQ(nodes_[0].additionalInfo.length(), 0U);
  }
}

TEST_F(TopoNodeAttributes, AreForSubnetworksWithAnyDomainNodeAtTheirPosition) {
  add({withAttribute(element("5"), "Hall||6")});
  EXPECT_STREQ(nodes_[0].additionalInfo[1].value.in(), "Hall");
}

TEST_F(TopoNodeAttributes, MakeRoomBeforeTheNameIsLookedAt) {
  nodes_[0].name.length(0);
  EXPECT_THROW(add({subnetwork("a")}), CORBA::BAD_PARAM);
  EXPECT_EQ(nodes_[0].additionalInfo.length(), 6U);
}

// --- The base of the view.

class TopoSubnetworkViewBase : public TopoSubnetworkView {
 protected:
  CORBA::ULong base() { return TopoManagementMgr::getTopoSubnetworkViewBaseInfo(*holder_.get()); }

  Lines ids() {
    Lines result;
    for (const TopoNode_T& node : *holder_) {
      result.push_back(node.nodeId);
    }
    return result;
  }

  topo::Holder<std::vector<TopoNode_T>> holder_;
};

TEST_F(TopoSubnetworkViewBase, MakesNodesOfTheElementsReceivedNotOfThoseAskedFor) {
  network().indexes = indexes({5, 6, 7});
  network().elements = {fakes::elementRecord(fakes::index(9)),
                        fakes::elementRecord(fakes::index(8))};
  EXPECT_EQ(base(), 0U);
  EXPECT_EQ(ids(), (Lines{"9", "8"}));
}

TEST_F(TopoSubnetworkViewBase, LogsFromAnotherLineThanTheView) {
  fakes::onEveryCall("GetAllTopoNodes", fakes::raiseProcessException(77));
  view();
  base();
  const Lines logged = Journal::linesOf({"TaDebugWithPara"});
  ASSERT_EQ(logged.size(), 2U);
  const int lineOfTheView = std::stoi(logged[0].substr(logged[0].rfind(':') + 1));
  const int lineOfItsBase = std::stoi(logged[1].substr(logged[1].rfind(':') + 1));
  EXPECT_GT(lineOfTheView, 0);
  EXPECT_GT(lineOfItsBase, 0);
  EXPECT_NE(lineOfTheView, lineOfItsBase);
}

TEST_F(TopoSubnetworkViewBase, CollectsTopologyAndElements) {
  fillNetwork();
  EXPECT_EQ(base(), 0U);
  EXPECT_EQ(ids(), (Lines{"a", "b", "NE=6", "5", "7"}));
}

TEST_F(TopoSubnetworkViewBase, MakesElementNodesOfNumberTypeAttributesAndName) {
  network().indexes = indexes({5});
  EXPECT_EQ(base(), 0U);
  ASSERT_EQ(holder_->size(), 1U);
  const TopoNode_T& node = holder_->front();
  EXPECT_EQ(node.nodeId, "5");
  EXPECT_EQ(node.nodeType, 1U);
  EXPECT_EQ(node.parentType, 0U);
  EXPECT_EQ(node.attribute3, 100);
  EXPECT_EQ(node.attribute4, 100);
  EXPECT_EQ(node.nativeName, "NE-5");
  EXPECT_EQ(node.parentId, "");
  EXPECT_EQ(node.text4, "");
  EXPECT_EQ(node.text5, "");
  EXPECT_TRUE(node.extendedAttributes.empty());
}

TEST_F(TopoSubnetworkViewBase, AppendsToTheContentOfTheHolder) {
  holder_->push_back(subnetwork("before"));
  network().nodes = {subnetwork("a")};
  EXPECT_EQ(base(), 0U);
  EXPECT_EQ(ids(), (Lines{"before", "a"}));
}

TEST_F(TopoSubnetworkViewBase, ReadsTheSwitchBehindTheIndexLists) {
  fillNetwork();
  EXPECT_EQ(base(), 0U);
  EXPECT_EQ(Journal::lines(), (Lines{"CheckIFBuf(\"DomainInterface\")"} + kTopoCalls + kIndexCalls +
                               Lines{"GetTestSwitch()", "GetNEData()", "GetNEList([0:5, 0:7])"}));
}

TEST_F(TopoSubnetworkViewBase, AsksForTheIndexListsInTestModeToo) {
  fillNetwork();
  fakes::agent().testSwitch = true;
  EXPECT_EQ(base(), 0U);
  EXPECT_EQ(ids(), (Lines{"a", "b", "NE=6"}));
  EXPECT_EQ(domainCalls(), kTopoCalls + kIndexCalls);
  EXPECT_EQ(Journal::count("GetTestSwitch"), 1);
}

TEST_F(TopoSubnetworkViewBase, DoesNotReadTheSwitchWhenNothingRemains) {
  fillNetwork();
  network().shownIndexes = network().indexes;
  EXPECT_EQ(base(), 0U);
  EXPECT_EQ(Journal::count("GetTestSwitch"), 0);
  EXPECT_EQ(Journal::count("GetNEList"), 0);
}

TEST_F(TopoSubnetworkViewBase, ReturnsTheCodeOfEveryFailedQuery) {
  fillNetwork();
  for (const char* query :
       {"GetFacet", "GetTopoData", "GetAllTopoNodes", "GetNEData", "GetNEIndexList", "GetNEList"}) {
    fakes::resetJournal();
    fakes::onCall(query, 1, fakes::raiseProcessException(77));
    EXPECT_EQ(base(), 77U) << query;
    EXPECT_EQ(loggedErrorWithoutLine(), caughtBy(kCollection, "77")) << query;
  }
}

TEST_F(TopoSubnetworkViewBase, KeepsTheNodesCollectedBeforeAFailure) {
  fillNetwork();
  fakes::onCall("GetNEList", 1, fakes::raiseProcessException(77));
  EXPECT_EQ(base(), 77U);
  EXPECT_EQ(ids(), (Lines{"a", "b", "NE=6"}));
}

TEST_F(TopoSubnetworkViewBase, ReturnsZeroForAFailureWithoutACode) {
  fillNetwork();
  fakes::onCall("GetNEIndexList", 2, fakes::raiseProcessException(0));
  EXPECT_EQ(base(), 0U);
  EXPECT_EQ(ids(), (Lines{"a", "b", "NE=6"}));
  EXPECT_EQ(loggedErrorWithoutLine(), caughtBy(kCollection, "0"));
}

TEST_F(TopoSubnetworkViewBase, ReturnsTheCodeOfAMissingDomain) {
  fakes::openBuffer("DomainInterface").Remove(&fakes::domainInterface());
  EXPECT_EQ(base(), 1092091908U);
  EXPECT_EQ(loggedErrorWithoutLine(), caughtBy(kCollection, "1092091908"));
}

TEST_F(TopoSubnetworkViewBase, PassesOnEveryOtherException) {
  fillNetwork();
  fakes::onCall("GetNEIndexList", 1, fakes::raiseRuntimeError("broken"));
  EXPECT_THROW(base(), std::runtime_error);
  EXPECT_EQ(ids(), (Lines{"a", "b", "NE=6"}));
}

}  // namespace
