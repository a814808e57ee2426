#include <set>
#include <string>
#include <vector>

#include "platform/agent/Failures.h"
#include "platform/framework/ProcessException.h"
#include "tests/fakes/Fixture.h"
#include "tests/fakes/Records.h"
#include "topo/TmfRecords.h"
#include "topomanagementmgr/TopoManagementMgr.h"
#include "topomanagementmgr/Vendor.h"

namespace {

using Lines = std::vector<std::string>;

using fakes::element;
using fakes::Journal;
using fakes::printed;
using fakes::subnetwork;
using globaldefs::NVSList_T;
using NS_DOMAIN::TopoNode_T;
using TopoManagementManager::Node_T;
using TopoManagementManager::NodeList_T;

constexpr std::uint32_t kFdn = 1;
constexpr std::uint32_t kTopoNodeId = 2;

constexpr const char* kNameFailed = "Failed to covert domain to tmf obj name!";
constexpr const char* kTypeFailed = "Failed to covert domain to tmf type of topo!";
constexpr const char* kIdIsZero = "Object ID cannot be 0!";

NVSList_T somePair() {
  NVSList_T pairs;
  topo::setLength(pairs, 1);
  topo::setPair(pairs, 0, "old", "old");
  return pairs;
}

// The only log record, without its line number, which is not fixed.
std::string loggedText() {
  const Lines lines = Journal::linesOf({"TaDebug", "TaDebugWithPara"});
  if (lines.size() != 1) {
    return std::to_string(lines.size()) + " log records";
  }
  const std::size_t colon = lines[0].rfind(':');
  return lines[0].substr(0, colon) + lines[0].substr(lines[0].find(' ', colon));
}

std::string traced(const std::string& text) {
  return "TaDebugWithPara(3, \"" + text + "\") at topomanagementmgr unknown";
}

// The calls of the conversions.
Lines conversions() {
  return Journal::linesOf({"ConvertNEIndexToName", "ConvertONEIndexToName", "ConvertOSIndexToName",
                           "ConvertTopoNodeIdToName"});
}

class TopoNameConversion : public fakes::PlatformFixture {
 protected:
  CORBA::ULong convert(std::uint32_t type, const std::string& id) {
    return TopoManagementMgr::convertDomainToTmfObjName(name_, type, id);
  }

  NVSList_T name_ = somePair();
};

// --- FDNs.

TEST_F(TopoNameConversion, NamesAnElementByItsNumber) {
  EXPECT_EQ(convert(kFdn, "OS=1,NE=5"), 0U);
  EXPECT_EQ(conversions(), Lines{"ConvertNEIndexToName(0, 5)"});
  EXPECT_EQ(printed(name_), "[EMS=EMS-1, ManagedElement=5]");
}

TEST_F(TopoNameConversion, NamesAnOpticalElementByItsNumber) {
  EXPECT_EQ(convert(kFdn, "OS=1,ONE=6"), 0U);
  EXPECT_EQ(conversions(), Lines{"ConvertONEIndexToName(0, 6)"});
  EXPECT_EQ(printed(name_), "[EMS=EMS-1, OpticalElement=6]");
}

TEST_F(TopoNameConversion, NamesAManagementSystemByItsNumber) {
  EXPECT_EQ(convert(kFdn, "OS=7"), 0U);
  EXPECT_EQ(conversions(), Lines{"ConvertOSIndexToName(7)"});
  EXPECT_EQ(printed(name_), "[EMS=EMS-1, OperationsSystem=7]");
}

TEST_F(TopoNameConversion, NamesAnyOtherClassAsAnElement) {
  EXPECT_EQ(convert(kFdn, "OS=1,RACK=8"), 0U);
  EXPECT_EQ(conversions(), Lines{"ConvertNEIndexToName(0, 8)"});
}

TEST_F(TopoNameConversion, TakesABareNumberAsTheObjectNumber) {
  EXPECT_EQ(convert(kFdn, "12"), 0U);
  EXPECT_EQ(conversions(), Lines{"ConvertNEIndexToName(0, 12)"});
}

TEST_F(TopoNameConversion, TakesANegativeBareNumberAsItIs) {
  EXPECT_EQ(convert(kFdn, "-3"), 0U);
  EXPECT_EQ(conversions(), Lines{"ConvertNEIndexToName(0, -3)"});
}

TEST_F(TopoNameConversion, TakesATextWithoutANumberAsZero) {
  EXPECT_EQ(convert(kFdn, "plain"), 0U);
  EXPECT_EQ(convert(kFdn, ""), 0U);
  EXPECT_EQ(conversions(), (Lines{"ConvertNEIndexToName(0, 0)", "ConvertNEIndexToName(0, 0)"}));
}

TEST_F(TopoNameConversion, NamesAnElementWithoutANumberByMinusOne) {
  EXPECT_EQ(convert(kFdn, "OS=1,NE=none"), 0U);
  EXPECT_EQ(conversions(), Lines{"ConvertNEIndexToName(0, -1)"});
}

TEST_F(TopoNameConversion, NamesAnOpticalElementWithoutANumberByZero) {
  EXPECT_EQ(convert(kFdn, "OS=1,ONE="), 0U);
  EXPECT_EQ(conversions(), Lines{"ConvertONEIndexToName(0, 0)"});
}

TEST_F(TopoNameConversion, NamesAManagementSystemWithoutANumberByZero) {
  EXPECT_EQ(convert(kFdn, "OS=99999999999"), 0U);
  EXPECT_EQ(conversions(), Lines{"ConvertOSIndexToName(0)"});
}

TEST_F(TopoNameConversion, NamesAnyOtherClassWithoutANumberByMinusOne) {
  EXPECT_EQ(convert(kFdn, "OS=1,RACK=none"), 0U);
  EXPECT_EQ(conversions(), Lines{"ConvertNEIndexToName(0, -1)"});
}

TEST_F(TopoNameConversion, NamesAnFdnWithoutAClassButWithPartsByMinusOne) {
  EXPECT_EQ(convert(kFdn, "NE=5,12"), 0U);
  EXPECT_EQ(conversions(), Lines{"ConvertNEIndexToName(0, -1)"});
}

TEST_F(TopoNameConversion, NamesAnElementWhosePartIsMissingByMinusOne) {
  fakes::corbaUtilAnswers().className = "NE";
  EXPECT_EQ(convert(kFdn, "OS=1,RACK=8"), 0U);
  EXPECT_EQ(Journal::linesOf({"GetIntegerValueByName", "Str2Int"}),
            Lines{"GetIntegerValueByName(\"NE\")"});
  EXPECT_EQ(conversions(), Lines{"ConvertNEIndexToName(0, -1)"});
}

TEST_F(TopoNameConversion, NamesAnElementWithoutAPartByMinusOne) {
  fakes::corbaUtilAnswers().className = "NE";
  EXPECT_EQ(convert(kFdn, "12"), 0U);
  EXPECT_EQ(Journal::count("Str2Int"), 0);
  EXPECT_EQ(conversions(), Lines{"ConvertNEIndexToName(0, -1)"});
}

TEST_F(TopoNameConversion, NamesAnOpticalElementWhosePartIsMissingByZero) {
  fakes::corbaUtilAnswers().className = "ONE";
  EXPECT_EQ(convert(kFdn, "OS=1,NE=5"), 0U);
  EXPECT_EQ(convert(kFdn, "12"), 0U);
  EXPECT_EQ(Journal::count("Str2Int"), 0);
  EXPECT_EQ(conversions(), (Lines{"ConvertONEIndexToName(0, 0)", "ConvertONEIndexToName(0, 0)"}));
}

TEST_F(TopoNameConversion, NamesAManagementSystemWhosePartIsMissingByZero) {
  fakes::corbaUtilAnswers().className = "OS";
  EXPECT_EQ(convert(kFdn, "ONE=6,NE=5"), 0U);
  EXPECT_EQ(convert(kFdn, "12"), 0U);
  EXPECT_EQ(Journal::count("Str2Int"), 0);
  EXPECT_EQ(conversions(), (Lines{"ConvertOSIndexToName(0)", "ConvertOSIndexToName(0)"}));
}

TEST_F(TopoNameConversion, NamesAnyOtherClassWhosePartIsMissingByMinusOne) {
  fakes::corbaUtilAnswers().className = "RACK";
  EXPECT_EQ(convert(kFdn, "OS=1,NE=5"), 0U);
  EXPECT_EQ(convert(kFdn, "12"), 0U);
  EXPECT_EQ(conversions(), (Lines{"ConvertNEIndexToName(0, -1)", "ConvertNEIndexToName(0, 12)"}));
}

TEST_F(TopoNameConversion, ComparesWholeClassTexts) {
  EXPECT_EQ(convert(kFdn, "ne=5"), 0U);
  EXPECT_EQ(convert(kFdn, "ONES=5"), 0U);
  EXPECT_EQ(convert(kFdn, "XOS=5"), 0U);
  EXPECT_EQ(conversions(), (Lines{"ConvertNEIndexToName(0, 5)", "ConvertNEIndexToName(0, 5)",
                                  "ConvertNEIndexToName(0, 5)"}));
}

TEST_F(TopoNameConversion, SplitsAnFdnAtCommasAndThenAsksForItsClass) {
  convert(kFdn, "OS=1,NE=5");
  EXPECT_EQ(Journal::lines(),
            (Lines{"GetSpliteFDNData(\"OS=1,NE=5\", \",\")", "GetMoc(\"OS=1,NE=5\")",
                   "GetIntegerValueByName(\"NE\")", "CheckIFBuf(\"CorbaUtilInterface\")",
                   "ConvertNEIndexToName(0, 5)"}));
}

TEST_F(TopoNameConversion, ReadsThePartNamedByAnUnknownClass) {
  convert(kFdn, "OS=1,RACK=8");
  EXPECT_EQ(Journal::linesOf({"GetIntegerValueByName", "Str2Int"}),
            Lines{"GetIntegerValueByName(\"RACK\")"});
}

TEST_F(TopoNameConversion, ReadsANumberFromTheIdOnlyWhenThereAreNoParts) {
  convert(kFdn, "12");
  EXPECT_EQ(Journal::linesOf({"GetIntegerValueByName", "Str2Int"}), Lines{"Str2Int(\"12\")"});
}

TEST_F(TopoNameConversion, PassesOnTheCodeOfEachConversion) {
  fakes::onCall("ConvertNEIndexToName", 1, fakes::giveCode(11));
  fakes::onCall("ConvertNEIndexToName", 2, fakes::giveCode(12));
  fakes::onCall("ConvertONEIndexToName", 1, fakes::giveCode(13));
  fakes::onCall("ConvertOSIndexToName", 1, fakes::giveCode(14));
  fakes::onCall("ConvertTopoNodeIdToName", 1, fakes::giveCode(0xFFFFFFFF));
  EXPECT_EQ(convert(kFdn, "NE=5"), 11U);
  EXPECT_EQ(convert(kFdn, "5"), 12U);
  EXPECT_EQ(convert(kFdn, "ONE=5"), 13U);
  EXPECT_EQ(convert(kFdn, "OS=5"), 14U);
  EXPECT_EQ(convert(kTopoNodeId, "map"), 0xFFFFFFFFU);
}

TEST_F(TopoNameConversion, LogsNothingWhenTheUtilityRefuses) {
  fakes::onEveryCall("ConvertNEIndexToName", fakes::giveCode(11));
  convert(kFdn, "NE=5");
  EXPECT_EQ(loggedText(), "0 log records");
}

// --- Topology node ids.

TEST_F(TopoNameConversion, NamesATopologyNodeByItsId) {
  EXPECT_EQ(convert(kTopoNodeId, "NE=5"), 0U);
  EXPECT_EQ(Journal::lines(),
            (Lines{"CheckIFBuf(\"CorbaUtilInterface\")", "ConvertTopoNodeIdToName(\"NE=5\")"}));
  EXPECT_EQ(printed(name_), "[EMS=EMS-1, TopoSubnetwork=NE=5]");
}

// --- Failures.

TEST_F(TopoNameConversion, RefusesAnyOtherType) {
  for (const std::uint32_t type : {0U, 3U, 0xFFFFFFFFU}) {
    Journal::clear();
    EXPECT_EQ(convert(type, "NE=5"), NS_CORBA::ERR_TOPO_CONVERSION);
    EXPECT_EQ(loggedText(), traced(kNameFailed));
    EXPECT_EQ(Journal::lines().size(), 1U);
    EXPECT_EQ(printed(name_), "[old=old]");
  }
}

TEST_F(TopoNameConversion, LooksUpTheUtilityForEveryConversion) {
  convert(kFdn, "NE=5");
  convert(kFdn, "5");
  convert(kTopoNodeId, "map");
  EXPECT_EQ(Journal::linesOf({"CheckIFBuf"}), Lines(3, "CheckIFBuf(\"CorbaUtilInterface\")"));
}

TEST_F(TopoNameConversion, ThrowsWhenTheUtilityIsMissing) {
  fakes::openBuffer("CorbaUtilInterface").Remove(&fakes::corbaUtil());
  EXPECT_THROW(convert(kFdn, "NE=5"), InterfaceNotExistException);
  EXPECT_THROW(convert(kFdn, "5"), InterfaceNotExistException);
  EXPECT_THROW(convert(kFdn, "ONE=5"), InterfaceNotExistException);
  EXPECT_THROW(convert(kFdn, "OS=5"), InterfaceNotExistException);
  EXPECT_THROW(convert(kTopoNodeId, "map"), InterfaceNotExistException);
  EXPECT_EQ(loggedText(), "0 log records");
}

// --- Nodes.

class TopoNodeConversion : public fakes::PlatformFixture {
 protected:
  TopoNodeConversion() {
    node_.name = somePair();
    node_.nativeEMSName = CORBA::string_dup("old label");
    node_.nodeType = 9;
    node_.nodeParam1 = 91;
    node_.nodeParam2 = 92;
    node_.relatedName = somePair();
    node_.additionalInfo = somePair();
  }

  CORBA::ULong convert(const TopoNode_T& domainNode) {
    return TopoManagementMgr::convertDomainNodeToTmf(node_, domainNode);
  }

  // The label and the fields after it are not written.
  void expectOldTail() {
    EXPECT_STREQ(node_.nativeEMSName.in(), "old label");
    EXPECT_EQ(node_.nodeParam1, 91);
    EXPECT_EQ(node_.nodeParam2, 92);
    EXPECT_EQ(printed(node_.additionalInfo), "[old=old]");
  }

  Node_T node_;
};

TEST_F(TopoNodeConversion, FillsAnElement) {
  TopoNode_T domainNode = element("NE=5", "Hall 5");
  domainNode.parentId = "map";
  domainNode.parentType = kTopoNodeId;
  domainNode.attribute3 = -7;
  domainNode.attribute4 = 2147483647;
  EXPECT_EQ(convert(domainNode), 0U);
  EXPECT_EQ(node_.nodeType, 0U);
  EXPECT_EQ(printed(node_.name), "[EMS=EMS-1, ManagedElement=5]");
  EXPECT_EQ(printed(node_.relatedName), "[EMS=EMS-1, TopoSubnetwork=map]");
  EXPECT_STREQ(node_.nativeEMSName.in(), "Hall 5");
  EXPECT_EQ(node_.nodeParam1, -7);
  EXPECT_EQ(node_.nodeParam2, 2147483647);
}

TEST_F(TopoNodeConversion, FillsASubnetwork) {
  EXPECT_EQ(convert(subnetwork("map", "")), 0U);
  EXPECT_EQ(node_.nodeType, 1U);
  EXPECT_EQ(printed(node_.name), "[EMS=EMS-1, TopoSubnetwork=map]");
  EXPECT_STREQ(node_.nativeEMSName.in(), "");
  EXPECT_EQ(node_.nodeParam1, 0);
}

TEST_F(TopoNodeConversion, CallsThePlatformInThisOrder) {
  TopoNode_T domainNode = subnetwork("map");
  domainNode.parentId = "QNMAP_PHY_SUBMAP";
  domainNode.parentType = kTopoNodeId;
  EXPECT_EQ(convert(domainNode), 0U);
  EXPECT_EQ(Journal::lines(),
            (Lines{"CheckIFBuf(\"CorbaUtilInterface\")", "ConvertTopoNodeIdToName(\"map\")",
                   "CheckIFBuf(\"CorbaUtilInterface\")",
                   "ConvertTopoNodeIdToName(\"QNMAP_PHY_SUBMAP\")", "GetTestSwitch()"}));
}

TEST_F(TopoNodeConversion, ConvertsTheParentByTheParentsType) {
  TopoNode_T domainNode = subnetwork("map");
  domainNode.parentId = "OS=3";
  domainNode.parentType = kFdn;
  EXPECT_EQ(convert(domainNode), 0U);
  EXPECT_EQ(printed(node_.relatedName), "[EMS=EMS-1, OperationsSystem=3]");
}

TEST_F(TopoNodeConversion, ConvertsAnyParentIdThatIsNotEmptyOrZero) {
  for (const char* id : {"QNMAP_PHY_SUBMAP", "00", " ", "0 "}) {
    TopoNode_T domainNode = subnetwork("map");
    domainNode.parentId = id;
    domainNode.parentType = kTopoNodeId;
    Journal::clear();
    EXPECT_EQ(convert(domainNode), 0U);
    EXPECT_EQ(conversions().size(), 2U) << id;
  }
}

TEST_F(TopoNodeConversion, ConvertsNoParentWhenThereIsNone) {
  for (const char* id : {"", "0"}) {
    TopoNode_T domainNode = subnetwork("map");
    domainNode.parentId = id;
    domainNode.parentType = kTopoNodeId;
    Journal::clear();
    EXPECT_EQ(convert(domainNode), 0U);
    EXPECT_EQ(conversions(), Lines{"ConvertTopoNodeIdToName(\"map\")"});
  }
}

TEST_F(TopoNodeConversion, KeepsAFreshRelatedNameEmptyWhenThereIsNoParent) {
  for (const char* id : {"", "0"}) {
    Node_T fresh;
    TopoNode_T domainNode = subnetwork("map");
    domainNode.parentId = id;
    EXPECT_EQ(TopoManagementMgr::convertDomainNodeToTmf(fresh, domainNode), 0U);
    EXPECT_EQ(fresh.relatedName.length(), 0U);
  }
}

TEST_F(TopoNodeConversion, LeavesAnOldRelatedNameWhenThereIsNoParent) {
  EXPECT_EQ(convert(subnetwork("map")), 0U);
  EXPECT_EQ(printed(node_.relatedName), "[old=old]");
}

TEST_F(TopoNodeConversion, RefusesAnyOtherTypeBeforeItWritesAnything) {
  for (const std::uint32_t type : {0U, 3U, 54U}) {
    TopoNode_T domainNode = subnetwork("map");
    domainNode.nodeType = type;
    Journal::clear();
    EXPECT_EQ(convert(domainNode), NS_CORBA::ERR_TOPO_CONVERSION);
    EXPECT_EQ(loggedText(), traced(kTypeFailed));
    EXPECT_EQ(Journal::lines().size(), 1U);
    EXPECT_EQ(node_.nodeType, 9U);
    EXPECT_EQ(printed(node_.name), "[old=old]");
    expectOldTail();
  }
}

TEST_F(TopoNodeConversion, TestsTheTypeBeforeTheId) {
  TopoNode_T domainNode = subnetwork("0");
  domainNode.nodeType = 3;
  convert(domainNode);
  EXPECT_EQ(loggedText(), traced(kTypeFailed));
}

TEST_F(TopoNodeConversion, RefusesTheIdZeroAfterTheTypeIsWritten) {
  EXPECT_EQ(convert(subnetwork("0")), NS_CORBA::ERR_TOPO_CONVERSION);
  EXPECT_EQ(loggedText(), traced(kIdIsZero));
  EXPECT_EQ(Journal::lines().size(), 1U);
  EXPECT_EQ(node_.nodeType, 1U);
  EXPECT_EQ(printed(node_.name), "[old=old]");
  expectOldTail();
}

TEST_F(TopoNodeConversion, AcceptsIdsThatOnlyLookLikeZero) {
  EXPECT_EQ(convert(subnetwork("00")), 0U);
  EXPECT_EQ(convert(element("")), 0U);
}

TEST_F(TopoNodeConversion, ReturnsTheCodeOfAFailedName) {
  fakes::onCall("ConvertTopoNodeIdToName", 1, fakes::giveCode(21));
  TopoNode_T domainNode = subnetwork("map");
  domainNode.parentId = "parent";
  domainNode.parentType = kTopoNodeId;
  EXPECT_EQ(convert(domainNode), 21U);
  EXPECT_EQ(conversions().size(), 1U);
  EXPECT_EQ(printed(node_.relatedName), "[old=old]");
  expectOldTail();
  EXPECT_EQ(loggedText(), "0 log records");
}

TEST_F(TopoNodeConversion, KeepsTheFieldsBeforeAFailedParentName) {
  fakes::onCall("ConvertTopoNodeIdToName", 2, fakes::giveCode(22));
  TopoNode_T domainNode = subnetwork("map", "new label");
  domainNode.parentId = "parent";
  domainNode.parentType = kTopoNodeId;
  EXPECT_EQ(convert(domainNode), 22U);
  EXPECT_EQ(node_.nodeType, 1U);
  EXPECT_EQ(printed(node_.name), "[EMS=EMS-1, TopoSubnetwork=map]");
  EXPECT_EQ(printed(node_.relatedName), "[EMS=EMS-1]");
  expectOldTail();
}

TEST_F(TopoNodeConversion, RefusesAParentOfTypeZeroAfterTheNameIsFilled) {
  TopoNode_T domainNode = subnetwork("map");
  domainNode.parentId = "parent";
  domainNode.parentType = 0;
  EXPECT_EQ(convert(domainNode), NS_CORBA::ERR_TOPO_CONVERSION);
  EXPECT_EQ(loggedText(), traced(kNameFailed));
  EXPECT_EQ(printed(node_.name), "[EMS=EMS-1, TopoSubnetwork=map]");
  EXPECT_EQ(printed(node_.relatedName), "[old=old]");
  expectOldTail();
}

TEST_F(TopoNodeConversion, DoesNotAskForTheTestSwitchWhenItFails) {
  fakes::onEveryCall("ConvertTopoNodeIdToName", fakes::giveCode(1));
  convert(subnetwork("map"));
  EXPECT_EQ(Journal::count("GetTestSwitch"), 0);
}

TEST_F(TopoNodeConversion, CutsTheAdditionalInfoToTheVendorInTestMode) {
  fakes::agent().testSwitch = true;
  topo::setLength(node_.additionalInfo, 5);
  EXPECT_EQ(convert(subnetwork("map")), 0U);
  EXPECT_EQ(printed(node_.additionalInfo), "[Vendor=KORVANE TECHNOLOGIES CO., LTD]");
}

TEST_F(TopoNodeConversion, AddsTheVendorToElementsToo) {
  fakes::agent().testSwitch = true;
  Node_T fresh;
  EXPECT_EQ(TopoManagementMgr::convertDomainNodeToTmf(fresh, element("5")), 0U);
  EXPECT_EQ(printed(fresh.additionalInfo), "[Vendor=KORVANE TECHNOLOGIES CO., LTD]");
}

TEST_F(TopoNodeConversion, LeavesTheAdditionalInfoUnchangedOutsideTestMode) {
  EXPECT_EQ(convert(subnetwork("map")), 0U);
  EXPECT_EQ(printed(node_.additionalInfo), "[old=old]");
}

TEST_F(TopoNodeConversion, ReadsTheTestSwitchAfreshForEveryNode) {
  fakes::agent().testSwitchAnswers = {true, false};
  EXPECT_EQ(convert(subnetwork("a")), 0U);
  node_.additionalInfo.length(0);
  EXPECT_EQ(convert(subnetwork("b")), 0U);
  EXPECT_EQ(node_.additionalInfo.length(), 0U);
}

TEST_F(TopoNodeConversion, ThrowsWhenTheUtilityIsMissing) {
  fakes::openBuffer("CorbaUtilInterface").Remove(&fakes::corbaUtil());
  EXPECT_THROW(convert(subnetwork("map")), InterfaceNotExistException);
}

TEST_F(TopoNodeConversion, LogsEachFailureFromALineOfItsOwn) {
  TopoNode_T unknownType = subnetwork("map");
  unknownType.nodeType = 3;
  TopoNode_T unknownParent = subnetwork("map");
  unknownParent.parentId = "parent";
  std::set<int> lines;
  for (const TopoNode_T& domainNode : {unknownType, subnetwork("0"), unknownParent}) {
    Journal::clear();
    EXPECT_EQ(convert(domainNode), NS_CORBA::ERR_TOPO_CONVERSION);
    const std::string logged = Journal::linesOf({"TaDebugWithPara"}).at(0);
    lines.insert(std::stoi(logged.substr(logged.rfind(':') + 1)));
  }
  EXPECT_EQ(lines.size(), 3U);
  EXPECT_GT(*lines.begin(), 0);
}

// --- Lists.

class TopoNodeListConversion : public fakes::PlatformFixture {
 protected:
  CORBA::ULong convert(const std::vector<TopoNode_T>& domainNodes) {
    return TopoManagementMgr::convertDomainNodesToTmf(nodes_, domainNodes);
  }

  NodeList_T nodes_;
};

TopoNode_T unknown(const std::string& label) {
  TopoNode_T node = subnetwork("x", label);
  node.nodeType = 3;
  return node;
}

TopoNode_T withParent(TopoNode_T node, const std::string& parentId, std::uint32_t parentType) {
  node.parentId = parentId;
  node.parentType = parentType;
  return node;
}

TEST_F(TopoNodeListConversion, GivesAnEmptyListForNoNodes) {
  topo::setLength(nodes_, 3);
  EXPECT_EQ(convert({}), 0U);
  EXPECT_EQ(nodes_.length(), 0U);
  EXPECT_EQ(Journal::lines(), Lines{});
}

TEST_F(TopoNodeListConversion, ConvertsEveryNodeInOrder) {
  EXPECT_EQ(convert({subnetwork("a", "A"), element("1", "B"), subnetwork("c", "C")}), 0U);
  EXPECT_EQ(fakes::labelsOf(nodes_), (Lines{"A", "B", "C"}));
}

TEST_F(TopoNodeListConversion, GivesTheSameListWhenItReleasesTheDomainNodes) {
  std::vector<TopoNode_T> domainNodes;
  for (int i = 0; i < 7; ++i) {
    const std::string label = std::to_string(i);
    const TopoNode_T node = i % 2 == 0 ? subnetwork("node" + label, label) : element(label, label);
    domainNodes.push_back(i % 3 == 1 ? unknown(label) : withParent(node, "p" + label, kTopoNodeId));
  }
  Journal::clear();
  EXPECT_EQ(convert(domainNodes), 0U);
  const Lines journal = Journal::lines();
  for (const std::size_t blockLength : {1U, 2U, 3U, 6U, 7U}) {
    std::vector<TopoNode_T> released = domainNodes;
    NodeList_T nodes;
    Journal::clear();
    EXPECT_EQ(TopoManagementMgr::convertAndReleaseDomainNodes(nodes, released, blockLength), 0U);
    EXPECT_EQ(Journal::lines(), journal);
    ASSERT_EQ(nodes.length(), nodes_.length());
    for (CORBA::ULong i = 0; i < nodes.length(); ++i) {
      EXPECT_EQ(fakes::fieldsOf(nodes[i]), fakes::fieldsOf(nodes_[i]));
    }
    EXPECT_EQ(released.capacity() == 0, blockLength < domainNodes.size());
  }
}

TEST_F(TopoNodeListConversion, LeavesOutANodeOfAnUnknownType) {
  EXPECT_EQ(convert({subnetwork("a", "A"), unknown("B"), element("3", "C")}), 0U);
  EXPECT_EQ(fakes::labelsOf(nodes_), (Lines{"A", "C"}));
  EXPECT_EQ(printed(nodes_[1].name), "[EMS=EMS-1, ManagedElement=3]");
  EXPECT_EQ(loggedText(), traced(kTypeFailed));
}

TEST_F(TopoNodeListConversion, LeavesOutANodeWithAParentOfTypeZero) {
  EXPECT_EQ(convert({withParent(subnetwork("a", "A"), "p", 0), element("3", "C")}), 0U);
  EXPECT_EQ(fakes::labelsOf(nodes_), Lines{"C"});
  EXPECT_EQ(loggedText(), traced(kNameFailed));
}

TEST_F(TopoNodeListConversion, LeavesOutANodeWhoseNameIsRefused) {
  fakes::onCall("ConvertTopoNodeIdToName", 2, fakes::giveCode(31));
  EXPECT_EQ(convert({subnetwork("a", "A"), subnetwork("b", "B"), subnetwork("c", "C")}), 0U);
  EXPECT_EQ(fakes::labelsOf(nodes_), (Lines{"A", "C"}));
}

TEST_F(TopoNodeListConversion, LeavesOutANodeWithTheIdZero) {
  EXPECT_EQ(convert({subnetwork("0", "A"), subnetwork("b", "B")}), 0U);
  EXPECT_EQ(fakes::labelsOf(nodes_), Lines{"B"});
  EXPECT_EQ(loggedText(), traced(kIdIsZero));
}

TEST_F(TopoNodeListConversion, IsEmptyWhenEveryNodeFails) {
  EXPECT_EQ(convert({unknown("A"), unknown("B")}), 0U);
  EXPECT_EQ(nodes_.length(), 0U);
}

TEST_F(TopoNodeListConversion, LeavesOutTheLastNode) {
  EXPECT_EQ(convert({subnetwork("a", "A"), unknown("B")}), 0U);
  EXPECT_EQ(fakes::labelsOf(nodes_), Lines{"A"});
}

TEST_F(TopoNodeListConversion, KeepsTheRelatedNameThatAFailedNodeLeft) {
  fakes::onCall("ConvertTopoNodeIdToName", 3, fakes::giveCode(41));
  EXPECT_EQ(convert({subnetwork("a", "A"), withParent(subnetwork("b", "B"), "p", kTopoNodeId),
                     subnetwork("c", "C"), subnetwork("d", "D")}),
            0U);
  EXPECT_EQ(fakes::labelsOf(nodes_), (Lines{"A", "C", "D"}));
  EXPECT_EQ(printed(nodes_[0].relatedName), "[]");
  EXPECT_EQ(printed(nodes_[1].relatedName), "[EMS=EMS-1]");  // the partial name of B
  EXPECT_EQ(printed(nodes_[2].relatedName), "[]");
}

TEST_F(TopoNodeListConversion, ReplacesTheParentThatAFailedNodeLeftInTheRecord) {
  fakes::onCall("ConvertTopoNodeIdToName", 2, fakes::giveCode(41));
  EXPECT_EQ(convert({withParent(subnetwork("b", "B"), "p", kTopoNodeId),
                     withParent(subnetwork("c", "C"), "q", kTopoNodeId)}),
            0U);
  ASSERT_EQ(nodes_.length(), 1U);
  EXPECT_EQ(printed(nodes_[0].relatedName), "[EMS=EMS-1, TopoSubnetwork=q]");
}

TEST_F(TopoNodeListConversion, GivesEveryNodeTheVendorInTestMode) {
  fakes::agent().testSwitch = true;
  EXPECT_EQ(convert({subnetwork("a"), element("1")}), 0U);
  EXPECT_EQ(printed(nodes_[0].additionalInfo), "[Vendor=KORVANE TECHNOLOGIES CO., LTD]");
  EXPECT_EQ(printed(nodes_[1].additionalInfo), "[Vendor=KORVANE TECHNOLOGIES CO., LTD]");
}

TEST_F(TopoNodeListConversion, GivesNoNodeTheVendorOutsideTestMode) {
  EXPECT_EQ(convert({subnetwork("a"), element("1")}), 0U);
  EXPECT_EQ(nodes_[0].additionalInfo.length(), 0U);
  EXPECT_EQ(nodes_[1].additionalInfo.length(), 0U);
}

TEST_F(TopoNodeListConversion, ThrowsWhenTheUtilityIsMissing) {
  fakes::openBuffer("CorbaUtilInterface").Remove(&fakes::corbaUtil());
  EXPECT_THROW(convert({subnetwork("a")}), InterfaceNotExistException);
}

}  // namespace
