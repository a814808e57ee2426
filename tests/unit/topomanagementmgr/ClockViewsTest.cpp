#include <limits>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "platform/framework/ProcessException.h"
#include "tests/fakes/Fixture.h"
#include "tests/fakes/Records.h"
#include "topo/TmfRecords.h"
#include "topomanagementmgr/TopoManagementMgr.h"

namespace {

using Lines = std::vector<std::string>;

using fakes::fieldsOf;
using fakes::Journal;
using fakes::LinkFields;
using fakes::NodeFields;
using fakes::printed;
using NS_DOMAIN::ClockPositionInfo_T;
using NS_DOMAIN::ClockTopoLinkInfo_T;
using topologicalLink::TopologicalLink_T;
using topologicalLink::TopologicalLinkList_T;
using TopoManagementManager::Node_T;
using TopoManagementManager::NodeList_T;

const char* const kUtility = "CheckIFBuf(\"CorbaUtilInterface\")";

// References and their object numbers.
const std::vector<std::pair<std::string, std::string>>& references() {
  static const auto& pairs = *new std::vector<std::pair<std::string, std::string>>{
      {"NE=5", "5"},
      {"=5", "5"},
      {"x=", "0"},
      {"x=abc", "0"},
      {"x=12abc", "12"},
      {"x=12.9", "12"},
      {"a=1=2", "1"},
      {"a==2", "0"},
      {"a=b=2", "0"},
      {"x=007", "7"},
      {"x=0x10", "0"},
      {"x=2147483647", "2147483647"},
      {"x=2147483648", "-2147483648"},
      {"x=4294967295", "-1"},
      {"x=4294967296", "0"},
      {"x=4294967301", "5"},
      {"NE=3,SLOT=4", "3"},
  };
  return pairs;
}

ClockPositionInfo_T position(const std::string& reference, const std::string& label = "") {
  ClockPositionInfo_T result;
  result.reference = reference;
  result.text2 = "carried=1";
  result.scalar3 = 333;
  result.text4 = "carried=2";
  result.label = label;
  return result;
}

ClockTopoLinkInfo_T clockLink(const std::string& id, const std::string& nativeName = "",
                              const std::string& aEnd = "", const std::string& zEnd = "") {
  ClockTopoLinkInfo_T result;
  result.linkId = id;
  result.text2 = result.text4 = result.text7 = result.text9 = "carried=1/2";
  result.text11 = result.text13 = "carried=3/4";
  result.scalar3 = result.scalar8 = result.scalar12 = result.scalar14 = 333;
  result.nativeName = nativeName;
  result.aEndReference = aEnd;
  result.zEndReference = zEnd;
  return result;
}

// --- Clock nodes.

class TopoClockNodes : public fakes::PlatformFixture {
 protected:
  void build(const std::vector<ClockPositionInfo_T>& positions) {
    EXPECT_EQ(TopoManagementMgr::buildClockSourceNodeList(nodes_, positions), 0);
    EXPECT_EQ(nodes_.length(), positions.size());
  }

  // The name of the node of a reference.
  std::string nameFor(const std::string& reference) {
    build({position(reference)});
    return printed(nodes_[0].name);
  }

  NodeList_T nodes_;
};

TEST_F(TopoClockNodes, CarryNameLabelAndValuesOfTheirPosition) {
  ClockPositionInfo_T clock = position("NE=5", "Clock 5");
  clock.value1 = 11;
  clock.value2 = -22;
  build({clock});
  EXPECT_EQ(fieldsOf(nodes_[0]),
            (NodeFields{"[EMS=EMS-1, ManagedElement=5]", "Clock 5", 0, 11, -22}));
}

TEST_F(TopoClockNodes, CarryExtremeValues) {
  ClockPositionInfo_T clock = position("NE=5");
  clock.value1 = std::numeric_limits<std::int32_t>::max();
  clock.value2 = std::numeric_limits<std::int32_t>::min();
  build({clock});
  EXPECT_EQ(fieldsOf(nodes_[0]),
            (NodeFields{"[EMS=EMS-1, ManagedElement=5]", "", 0, clock.value1, clock.value2}));
}

TEST_F(TopoClockNodes, AreEmptyWithoutPositions) {
  topo::setLength(nodes_, 3);
  build({});
  EXPECT_EQ(Journal::lines(), Lines{});
}

TEST_F(TopoClockNodes, KeepOrderAndDuplicates) {
  build({position("NE=7", "B"), position("NE=5", "A"), position("NE=7", "B"), position("", "C")});
  EXPECT_EQ(fieldsOf(nodes_[0]), (NodeFields{"[EMS=EMS-1, ManagedElement=7]", "B"}));
  EXPECT_EQ(fieldsOf(nodes_[1]), (NodeFields{"[EMS=EMS-1, ManagedElement=5]", "A"}));
  EXPECT_EQ(fieldsOf(nodes_[2]), fieldsOf(nodes_[0]));
  EXPECT_EQ(fieldsOf(nodes_[3]), (NodeFields{"[]", "C"}));
}

TEST_F(TopoClockNodes, AreNamedAfterTheNumberBehindTheFirstEqualsSign) {
  for (const auto& each : references()) {
    EXPECT_EQ(nameFor(each.first), "[EMS=EMS-1, ManagedElement=" + each.second + "]") << each.first;
  }
}

TEST_F(TopoClockNodes, KeepTheLow32BitsOfALargerNumber) {
  EXPECT_EQ(nameFor("x=9223372036854775807"), "[EMS=EMS-1, ManagedElement=-1]");
  EXPECT_EQ(nameFor("x=4294967296000000012"),
            "[EMS=EMS-1, ManagedElement=" +
                std::to_string(static_cast<std::int32_t>(4294967296000000012LL)) + "]");
}

TEST_F(TopoClockNodes, ReadSignsAndSkipBlanksBeforeTheNumber) {
  const std::vector<std::pair<std::string, std::string>> numbers = {
      {"-5", "-5"},         {"+5", "5"},
      {" 5", "5"},          {"\t\n -5", "-5"},
      {"5 6", "5"},         {"- 5", "0"},
      {"--5", "0"},         {"+-5", "0"},
      {" ", "0"},           {"-2147483648", "-2147483648"},
      {"-4294967301", "-5"}};
  for (const auto& [text, number] : numbers) {
    EXPECT_EQ(nameFor("x=" + text), "[EMS=EMS-1, ManagedElement=" + number + "]") << text;
  }
}

TEST_F(TopoClockNodes, TakeTheLargestNumberForOneOfMoreThan64Bits) {
  EXPECT_EQ(nameFor("x=99999999999999999999"), "[EMS=EMS-1, ManagedElement=-1]");
  EXPECT_EQ(nameFor("x=-99999999999999999999"), "[EMS=EMS-1, ManagedElement=0]");
}

TEST_F(TopoClockNodes, HaveNoNameWithoutAnEqualsSign) {
  for (const char* reference : {"", "no equals", "12", "NE:5"}) {
    ClockPositionInfo_T clock = position(reference, "Clock");
    clock.value1 = 1;
    clock.value2 = 2;
    build({clock});
    EXPECT_EQ(fieldsOf(nodes_[0]), (NodeFields{"[]", "Clock", 0, 1, 2})) << reference;
  }
  EXPECT_EQ(Journal::lines(), Lines{});
}

TEST_F(TopoClockNodes, ConvertTheKeyOfZeroAndTheNumber) {
  build({position("NE=5"), position("x="), position("x=-")});
  EXPECT_EQ(Journal::lines(),
            (Lines{kUtility, "ConvertNEIndexToName(0, 5)", kUtility, "ConvertNEIndexToName(0, 0)",
                   kUtility, "ConvertNEIndexToName(0, 0)"}));
}

TEST_F(TopoClockNodes, LookUpTheUtilityForEveryConversion) {
  build({position("NE=5"), position("none"), position("NE=6")});
  EXPECT_EQ(Journal::lines(), (Lines{kUtility, "ConvertNEIndexToName(0, 5)", kUtility,
                                     "ConvertNEIndexToName(0, 6)"}));
}

TEST_F(TopoClockNodes, ShareOneKeyAndWriteOnlyItsNumber) {
  fakes::corbaUtilAnswers().addedToKey = 10;
  build({position("NE=5"), position("none"), position("NE=6")});
  build({position("NE=7")});
  EXPECT_EQ(Journal::linesOf({"ConvertNEIndexToName"}),
            (Lines{"ConvertNEIndexToName(0, 5)", "ConvertNEIndexToName(10, 6)",
                   "ConvertNEIndexToName(0, 7)"}));
}

TEST_F(TopoClockNodes, KeepThePartialNameOfAFailedConversion) {
  fakes::onCall("ConvertNEIndexToName", 1, fakes::giveCode(9));
  build({position("NE=5", "A"), position("NE=6", "B")});
  EXPECT_EQ(fieldsOf(nodes_[0]), (NodeFields{"[EMS=EMS-1]", "A"}));
  EXPECT_EQ(fieldsOf(nodes_[1]), (NodeFields{"[EMS=EMS-1, ManagedElement=6]", "B"}));
  EXPECT_EQ(Journal::linesOf({"TaDebug", "TaDebugWithPara", "NbiException"}), Lines{});
}

TEST_F(TopoClockNodes, StartEveryNameEmpty) {
  fakes::onCall("ConvertNEIndexToName", 2, [] {
    fakes::corbaUtilAnswers().leaveNamesAlone = true;
    return 9U;
  });
  build({position("NE=5"), position("NE=6")});
  EXPECT_EQ(printed(nodes_[0].name), "[EMS=EMS-1, ManagedElement=5]");
  EXPECT_EQ(printed(nodes_[1].name), "[]");
}

TEST_F(TopoClockNodes, OverwriteEveryFieldOfTheList) {
  topo::setLength(nodes_, 1);
  Node_T& node = nodes_[0];
  node.name = node.relatedName = node.additionalInfo = fakes::nameOf("old", "old");
  node.nativeEMSName = CORBA::string_dup("old");
  node.nodeType = 1;
  node.nodeParam1 = node.nodeParam2 = 99;
  build({position("none", "new")});
  EXPECT_EQ(fieldsOf(nodes_[0]), (NodeFields{"[]", "new"}));
}

TEST_F(TopoClockNodes, CarryNoVendorInTestMode) {
  fakes::agent().testSwitch = true;
  build({position("NE=5")});
  EXPECT_EQ(nodes_[0].additionalInfo.length(), 0U);
  EXPECT_EQ(Journal::count("GetTestSwitch"), 0);
}

TEST_F(TopoClockNodes, ThrowWhenTheUtilityIsMissing) {
  fakes::openBuffer("CorbaUtilInterface").Remove(&fakes::corbaUtil());
  EXPECT_THROW(TopoManagementMgr::buildClockSourceNodeList(nodes_, {position("NE=5")}),
               InterfaceNotExistException);
}

TEST_F(TopoClockNodes, IgnoreAMissingUtilityThatIsNotNeeded) {
  fakes::openBuffer("CorbaUtilInterface").Remove(&fakes::corbaUtil());
  build({position("none", "A")});
  EXPECT_EQ(fieldsOf(nodes_[0]), (NodeFields{"[]", "A"}));
}

TEST_F(TopoClockNodes, PassExceptionsOfTheUtility) {
  fakes::onCall("ConvertNEIndexToName", 1, fakes::raiseRuntimeError("broken"));
  EXPECT_THROW(TopoManagementMgr::buildClockSourceNodeList(nodes_, {position("NE=5")}),
               std::runtime_error);
  fakes::onCall("ConvertNEIndexToName", 2, fakes::raiseProcessException(7));
  EXPECT_THROW(TopoManagementMgr::buildClockSourceNodeList(nodes_, {position("NE=5")}),
               ProcessException);
}

// --- Clock links.

class TopoClockLinks : public fakes::PlatformFixture {
 protected:
  void build(const std::vector<ClockTopoLinkInfo_T>& clockLinks) {
    EXPECT_EQ(TopoManagementMgr::buildClockTopoLinkList(links_, clockLinks), 0);
    EXPECT_EQ(links_.length(), clockLinks.size());
  }

  Lines labelsOfThree() {
    build({clockLink("1", "a"), clockLink("2", "b"), clockLink("3", "c")});
    return {links_[0].userLabel.in(), links_[1].userLabel.in(), links_[2].userLabel.in()};
  }

  std::string typeFor(const std::string& nativeName) {
    build({clockLink("1", nativeName)});
    EXPECT_STREQ(links_[0].nativeEMSName.in(), nativeName.c_str());
    EXPECT_STREQ(links_[0].userLabel.in(), ("Links:" + nativeName).c_str());
    return printed(links_[0].additionalInfo);
  }

  TopologicalLinkList_T links_;
};

TEST_F(TopoClockLinks, CarryNamesLabelsEndsAndType) {
  build({clockLink("L1", "ab/cd/ef", "NE=5", "NE=6")});
  EXPECT_EQ(fieldsOf(links_[0]),
            (LinkFields{"[EMS=EMS-1, ClockTopoLinkId=L1]", "Links:ab/cd/ef", "ab/cd/ef",
                        "[EMS=EMS-1, ManagedElement=5]", "[EMS=EMS-1, ManagedElement=6]",
                        "[TOPO_LINK_TYPE=ab]"}));
  EXPECT_EQ(links_[0].direction, globaldefs::CD_UNI);
}

TEST_F(TopoClockLinks, CopyEmptyTextsAndLists) {
  build({clockLink("")});
  EXPECT_EQ(fieldsOf(links_[0]), (LinkFields{"[EMS=EMS-1, ClockTopoLinkId=]", "Links:"}));
}

TEST_F(TopoClockLinks, AreEmptyWithoutClockLinks) {
  topo::setLength(links_, 3);
  build({});
  EXPECT_EQ(Journal::lines(), Lines{});
}

TEST_F(TopoClockLinks, KeepOrderAndDuplicates) {
  build({clockLink("2", "b"), clockLink("1", "a"), clockLink("2", "b")});
  EXPECT_EQ(printed(links_[0].name), "[EMS=EMS-1, ClockTopoLinkId=2]");
  EXPECT_EQ(printed(links_[1].name), "[EMS=EMS-1, ClockTopoLinkId=1]");
  EXPECT_EQ(fieldsOf(links_[2]), fieldsOf(links_[0]));
}

TEST_F(TopoClockLinks, AreNamedAfterTheirUnchangedId) {
  for (const char* id : {"12", " 12", "x=12abc", "a/b", "=", "-1", "99999999999999999999"}) {
    build({clockLink(id, "n")});
    EXPECT_EQ(printed(links_[0].name), std::string("[EMS=EMS-1, ClockTopoLinkId=") + id + "]");
  }
}

TEST_F(TopoClockLinks, HaveTheTypeBeforeTheFirstSlash) {
  EXPECT_EQ(typeFor("ab/cd/ef"), "[TOPO_LINK_TYPE=ab]");
  EXPECT_EQ(typeFor("ab/"), "[TOPO_LINK_TYPE=ab]");
  EXPECT_EQ(typeFor("a b//c"), "[TOPO_LINK_TYPE=a b]");
}

TEST_F(TopoClockLinks, HaveAnEmptyTypeWithoutASlash) {
  for (const char* nativeName : {"", "ab", "/", "/ab", "//", "ab\\cd"}) {
    EXPECT_EQ(typeFor(nativeName), "[TOPO_LINK_TYPE=]") << nativeName;
  }
}

TEST_F(TopoClockLinks, NameBothEndsAfterTheNumberBehindTheFirstEqualsSign) {
  for (const auto& each : references()) {
    build({clockLink("1", "n", each.first, "z=77"), clockLink("2", "n", "a=78", each.first)});
    const std::string name = "[EMS=EMS-1, ManagedElement=" + each.second + "]";
    EXPECT_EQ(printed(links_[0].aEndTP), name) << each.first;
    EXPECT_EQ(printed(links_[0].zEndTP), "[EMS=EMS-1, ManagedElement=77]");
    EXPECT_EQ(printed(links_[1].aEndTP), "[EMS=EMS-1, ManagedElement=78]");
    EXPECT_EQ(printed(links_[1].zEndTP), name) << each.first;
  }
}

TEST_F(TopoClockLinks, HaveAnEmptyEndWithoutAnEqualsSign) {
  build({clockLink("1", "n", "no equals", "NE=6"), clockLink("2", "n", "NE=5", "12"),
         clockLink("3", "n", "", "")});
  EXPECT_EQ(printed(links_[0].aEndTP), "[]");
  EXPECT_EQ(printed(links_[0].zEndTP), "[EMS=EMS-1, ManagedElement=6]");
  EXPECT_EQ(printed(links_[1].aEndTP), "[EMS=EMS-1, ManagedElement=5]");
  EXPECT_EQ(printed(links_[1].zEndTP), "[]");
  EXPECT_EQ(Journal::count("ConvertNEIndexToName"), 2);
}

TEST_F(TopoClockLinks, ShareOneKeyAndWriteOnlyItsNumber) {
  fakes::corbaUtilAnswers().addedToKey = 10;
  build({clockLink("1", "n", "NE=5", "NE=6"), clockLink("2", "n", "none", "NE=7")});
  build({clockLink("3", "n", "NE=8", "none")});
  EXPECT_EQ(Journal::linesOf({"ConvertNEIndexToName"}),
            (Lines{"ConvertNEIndexToName(0, 5)", "ConvertNEIndexToName(10, 6)",
                   "ConvertNEIndexToName(20, 7)", "ConvertNEIndexToName(0, 8)"}));
}

TEST_F(TopoClockLinks, KeepThePartialEndNameOfAFailedConversion) {
  fakes::onCall("ConvertNEIndexToName", 1, fakes::giveCode(9));
  fakes::onCall("ConvertNEIndexToName", 4, fakes::giveCode(9));
  build({clockLink("1", "n", "NE=5", "NE=6"), clockLink("2", "n", "NE=7", "NE=8")});
  EXPECT_EQ(printed(links_[0].aEndTP), "[EMS=EMS-1]");
  EXPECT_EQ(printed(links_[0].zEndTP), "[EMS=EMS-1, ManagedElement=6]");
  EXPECT_EQ(printed(links_[1].aEndTP), "[EMS=EMS-1, ManagedElement=7]");
  EXPECT_EQ(printed(links_[1].zEndTP), "[EMS=EMS-1]");
  EXPECT_EQ(Journal::linesOf({"TaDebug", "TaDebugWithPara", "NbiException"}), Lines{});
}

TEST_F(TopoClockLinks, StartEveryEndEmpty) {
  fakes::onCall("ConvertNEIndexToName", 2, [] {
    fakes::corbaUtilAnswers().leaveNamesAlone = true;
    return 9U;
  });
  build({clockLink("1", "n", "NE=5", "NE=6"), clockLink("2", "n", "NE=7", "none")});
  EXPECT_EQ(printed(links_[0].aEndTP), "[EMS=EMS-1, ManagedElement=5]");
  EXPECT_EQ(printed(links_[0].zEndTP), "[]");
  EXPECT_EQ(printed(links_[1].aEndTP), "[]");
}

// --- Labels of clock links.

TEST_F(TopoClockLinks, AreLabelledWithTheStoredLabelOnly) {
  fakes::corbaUtilAnswers().labels.userLabel = "Stored";
  build({clockLink("1", "ab/cd")});
  EXPECT_EQ(fieldsOf(links_[0]), (LinkFields{"[EMS=EMS-1, ClockTopoLinkId=1]", "Stored", "ab/cd",
                                             "[]", "[]", "[TOPO_LINK_TYPE=ab]"}));
}

TEST_F(TopoClockLinks, AreLabelledWithTheirNameWhenTheStoredLabelIsEmpty) {
  fakes::corbaUtilAnswers().labels = {"", "second", "third", "fourth"};
  EXPECT_EQ(labelsOfThree(), (Lines{"Links:a", "Links:b", "Links:c"}));
}

TEST_F(TopoClockLinks, KeepAStoredLabelOfBlanks) {
  fakes::corbaUtilAnswers().labels.userLabel = " ";
  EXPECT_EQ(labelsOfThree(), (Lines{" ", " ", " "}));
}

TEST_F(TopoClockLinks, HaveSeparateLabels) {
  fakes::onCall("GetObjectLabelInfo", 2, [] {
    fakes::corbaUtilAnswers().labels.userLabel = "Stored";
    return 0U;
  });
  fakes::onCall("GetObjectLabelInfo", 3, [] {
    fakes::corbaUtilAnswers().labels.userLabel = "";
    return 0U;
  });
  EXPECT_EQ(labelsOfThree(), (Lines{"Links:a", "Stored", "Links:c"}));
}

TEST_F(TopoClockLinks, AskForEveryLabelWithAnEmptyRecord) {
  fakes::corbaUtilAnswers().labels = {"Stored", "second", "third", "fourth"};
  fakes::onCall("GetObjectLabelInfo", 2, [] {
    fakes::corbaUtilAnswers().leaveLabelsAlone = true;
    return 0U;
  });
  EXPECT_EQ(labelsOfThree(), (Lines{"Stored", "Links:b", "Links:c"}));
  const std::string empty = "'' '' '' ''";
  EXPECT_EQ(fakes::corbaUtilAnswers().labelRequests, (Lines{empty, empty, empty}));
}

TEST_F(TopoClockLinks, TakeTheLabelOfACallThatFails) {
  fakes::corbaUtilAnswers().labels.userLabel = "Stored";
  fakes::onEveryCall("GetObjectLabelInfo", fakes::giveCode(9));
  EXPECT_EQ(labelsOfThree(), (Lines{"Stored", "Stored", "Stored"}));
  EXPECT_EQ(Journal::linesOf({"TaDebug", "TaDebugWithPara", "NbiException"}), Lines{});
}

TEST_F(TopoClockLinks, AskForTheLabelOfTheirIdAsType201) {
  build({clockLink("x=12abc", "n", "NE=5", "NE=6"), clockLink("", "n")});
  EXPECT_EQ(Journal::linesOf({"GetObjectLabelInfo"}),
            (Lines{"GetObjectLabelInfo(\"x=12abc\", 201)", "GetObjectLabelInfo(\"\", 201)"}));
}

// --- Calls for clock links.

TEST_F(TopoClockLinks, MakeTheseCallsInThisOrderOneLinkAfterTheOther) {
  build({clockLink("1", "n", "NE=5", "NE=6"), clockLink("2", "n", "none", "NE=7"),
         clockLink("3", "n", "none", "none")});
  EXPECT_EQ(
      Journal::lines(),
      (Lines{"EmsName()", kUtility, "GetObjectLabelInfo(\"1\", 201)", kUtility,
             "ConvertNEIndexToName(0, 5)", kUtility, "ConvertNEIndexToName(0, 6)", "EmsName()",
             kUtility, "GetObjectLabelInfo(\"2\", 201)", kUtility, "ConvertNEIndexToName(0, 7)",
             "EmsName()", kUtility, "GetObjectLabelInfo(\"3\", 201)"}));
}

TEST_F(TopoClockLinks, ReadTheNameOfTheSystemOnceForEveryLink) {
  fakes::agent().emsName = "First";
  fakes::onCall("EmsName", 2, [] {
    fakes::agent().emsName = "Second";
    return 0U;
  });
  build({clockLink("1"), clockLink("2")});
  EXPECT_EQ(printed(links_[0].name), "[EMS=First, ClockTopoLinkId=1]");
  EXPECT_EQ(printed(links_[1].name), "[EMS=Second, ClockTopoLinkId=2]");
  EXPECT_EQ(Journal::count("EmsName"), 2);
}

TEST_F(TopoClockLinks, OverwriteEveryFieldOfTheList) {
  topo::setLength(links_, 1);
  TopologicalLink_T& link = links_[0];
  link.name = link.aEndTP = link.zEndTP = link.additionalInfo = fakes::nameOf("old", "old");
  link.userLabel = CORBA::string_dup("old");
  link.nativeEMSName = CORBA::string_dup("old");
  link.owner = CORBA::string_dup("old");
  link.direction = globaldefs::CD_BI;
  link.rate = 99;
  build({clockLink("1", "new")});
  EXPECT_EQ(fieldsOf(links_[0]),
            (LinkFields{"[EMS=EMS-1, ClockTopoLinkId=1]", "Links:new", "new"}));
}

TEST_F(TopoClockLinks, ThrowWhenTheUtilityIsMissing) {
  fakes::openBuffer("CorbaUtilInterface").Remove(&fakes::corbaUtil());
  EXPECT_THROW(TopoManagementMgr::buildClockTopoLinkList(links_, {clockLink("1")}),
               InterfaceNotExistException);
}

TEST_F(TopoClockLinks, PassExceptionsOfThePlatform) {
  const std::vector<ClockTopoLinkInfo_T> one = {clockLink("1", "n", "NE=5", "NE=6")};
  for (const char* call : {"EmsName", "GetObjectLabelInfo", "ConvertNEIndexToName"}) {
    fakes::resetJournal();
    fakes::onCall(call, 1, fakes::raiseRuntimeError("broken"));
    EXPECT_THROW(TopoManagementMgr::buildClockTopoLinkList(links_, one), std::runtime_error)
        << call;
    fakes::onCall(call, 2, fakes::raiseProcessException(7));
    EXPECT_THROW(TopoManagementMgr::buildClockTopoLinkList(links_, one), ProcessException) << call;
  }
}

}  // namespace
