// Notifications of changed labels.

#include <stdexcept>
#include <string>
#include <vector>

#include "tests/unit/topoevent/EventUnderTest.h"

namespace {

using fakes::element;
using fakes::Journal;
using fakes::Notification;
using fakes::subnetwork;
using NS_DOMAIN::TopoNode_T;

int relabel(const std::vector<TopoNode_T>& nodes) {
  return TopoEventMgr::notifyNodeLabelsChanged(nodes);
}

class TopoChangedLabels : public EventUnderTest {};

TEST_F(TopoChangedLabels, AreReportedOneByOneInOrder) {
  EXPECT_EQ(relabel({subnetwork("b", "B"), subnetwork("a", "A")}), 0);
  EXPECT_EQ(Journal::lines(),
            (Lines{"GetTestSwitch()", "CheckIFBuf(\"CorbaUtilInterface\")",
                   "ConvertTopoNodeIdToName(\"b\")",
                   "OnObjectAVC([EMS=EMS-1, TopoSubnetwork=b], true, false)", "GetTestSwitch()",
                   "CheckIFBuf(\"CorbaUtilInterface\")", "ConvertTopoNodeIdToName(\"a\")",
                   "OnObjectAVC([EMS=EMS-1, TopoSubnetwork=a], true, false)"}));
}

TEST_F(TopoChangedLabels, AreReportedAsTheOnlyAttribute) {
  relabel({subnetwork("a", "the new label")});
  EXPECT_EQ(changes(), (Changes{{"[EMS=EMS-1, TopoSubnetwork=a]", "the new label"}}));
}

TEST_F(TopoChangedLabels, HaveNoOtherContent) {
  relabel({subnetwork("a", "A")});
  const Notification sent = fakes::notificationsSent().at(0);
  EXPECT_TRUE(sent.edgePointRelated);
  EXPECT_FALSE(sent.hasAdditional);
  const CORBA::TypeCode_var type = sent.additional.type();
  EXPECT_EQ(type->kind(), CORBA::tk_null);
}

TEST_F(TopoChangedLabels, AreReportedAlsoForANodeThatCannotBeNamed) {
  fakes::onCall("ConvertTopoNodeIdToName", 2, fakes::giveCode(9));
  TopoNode_T unknown = subnetwork("u", "U");
  unknown.nodeType = 3;
  relabel({subnetwork("a", "A"), subnetwork("b", "B"), unknown});
  EXPECT_EQ(changes(), (Changes{change("a", "A"), {"[EMS=EMS-1]", "B"}, {"[]", "U"}}));
}

TEST_F(TopoChangedLabels, AreReportedByteForByte) {
  relabel({subnetwork("a", "\xc3\xa4 \xff\n")});
  EXPECT_EQ(changes(), Changes{change("a", "\xc3\xa4 \xff\n")});
}

// --- Outside test mode.

TEST_F(TopoChangedLabels, ThatAreEmptySkipTheNode) {
  relabel({subnetwork("a", "A"), subnetwork("b", ""), subnetwork("c", "C")});
  EXPECT_EQ(changes(), (Changes{change("a", "A"), change("c", "C")}));
  EXPECT_EQ(Journal::count("ConvertTopoNodeIdToName"), 2);
}

TEST_F(TopoChangedLabels, AreReportedRepeatedlyOutsideTestMode) {
  relabel({subnetwork("a", "A"), subnetwork("a", "A"), subnetwork("b", "A")});
  relabel({subnetwork("a", "A")});
  EXPECT_EQ(changes().size(), 4U);
}

TEST_F(TopoChangedLabels, NeitherReadNorChangeTheCachesOutsideTestMode) {
  topo::nodeLabelCache.append(own("a"), "A");
  const auto before = topo::nodeLabelCache.labels();
  topo::lastReportedLabel.storeChange("B");
  relabel({subnetwork(own("a"), "A"), subnetwork(own("a"), "B"), subnetwork(own("a"), "C")});
  EXPECT_EQ(changes().size(), 3U);
  EXPECT_EQ(topo::nodeLabelCache.labels(), before);
  EXPECT_FALSE(topo::lastReportedLabel.storeChange("B"));
}

// --- In test mode.

class TopoChangedLabelsInTestMode : public EventUnderTest {
 protected:
  TopoChangedLabelsInTestMode() { fakes::agent().testSwitch = true; }

  // Adds a node of this test to the cache.
  static void remember(const std::string& identifier, const std::string& label) {
    topo::nodeLabelCache.append(own(identifier), label);
  }

  static TopoNode_T node(const std::string& identifier, const std::string& label) {
    return subnetwork(own(identifier), label);
  }

  static LabelChange ownChange(const std::string& identifier, const std::string& label) {
    return change(own(identifier), label);
  }

  // The label in the first cache entry of a node.
  static std::string remembered(const std::string& identifier) {
    const auto identifiers = topo::nodeLabelCache.identifiers();
    const auto labels = topo::nodeLabelCache.labels();
    for (std::size_t i = 0; i < identifiers.size(); ++i) {
      if (identifiers[i] == own(identifier)) {
        return labels[i];
      }
    }
    return "(nothing)";
  }
};

TEST_F(TopoChangedLabelsInTestMode, AreReportedAndCached) {
  remember("a", "A");
  EXPECT_EQ(relabel({node("a", "B")}), 0);
  EXPECT_EQ(changes(), Changes{ownChange("a", "B")});
  EXPECT_EQ(remembered("a"), "B");
}

TEST_F(TopoChangedLabelsInTestMode, AreReportedForANodeThatIsNotCached) {
  relabel({node("a", "A")});
  EXPECT_EQ(changes(), Changes{ownChange("a", "A")});
  EXPECT_EQ(remembered("a"), "(nothing)");
}

TEST_F(TopoChangedLabelsInTestMode, EndTheWholeEventWhenTheLabelIsKnown) {
  remember("b", "B");
  EXPECT_EQ(relabel({node("a", "A"), node("b", "B"), node("c", "C")}), 0);
  EXPECT_EQ(changes(), Changes{ownChange("a", "A")});
  EXPECT_EQ(Journal::count("GetTestSwitch"), 2);
  EXPECT_EQ(Journal::count("ConvertTopoNodeIdToName"), 1);
}

TEST_F(TopoChangedLabelsInTestMode, EndOneEventOnly) {
  remember("a", "A");
  relabel({node("a", "A"), node("b", "B")});
  relabel({node("b", "B")});
  EXPECT_EQ(changes(), Changes{ownChange("b", "B")});
}

TEST_F(TopoChangedLabelsInTestMode, EndTheEventAtARepetitionOfAChange) {
  remember("a", "A");
  relabel({node("a", "B"), node("a", "B"), node("c", "C")});
  EXPECT_EQ(changes(), Changes{ownChange("a", "B")});
}

TEST_F(TopoChangedLabelsInTestMode, AreComparedWithTheFirstEntryOfANode) {
  remember("a", "A");
  remember("a", "B");
  relabel({node("a", "B"), node("c", "C")});
  EXPECT_EQ(changes(), (Changes{ownChange("a", "B"), ownChange("c", "C")}));
}

TEST_F(TopoChangedLabelsInTestMode, ThatAreEmptySkipTheNode) {
  relabel({node("a", ""), node("b", "B")});
  EXPECT_EQ(changes(), Changes{ownChange("b", "B")});
}

TEST_F(TopoChangedLabelsInTestMode, ThatAreEmptyAreCached) {
  remember("a", "A");
  relabel({node("a", ""), node("b", "B")});
  EXPECT_EQ(remembered("a"), "");
  EXPECT_EQ(changes(), Changes{ownChange("b", "B")});
}

TEST_F(TopoChangedLabelsInTestMode, ThatAreEmptyEndTheEventWhenTheEmptyLabelIsKnown) {
  remember("a", "");
  relabel({node("a", ""), node("b", "B")});
  EXPECT_EQ(changes(), Changes{});
}

TEST_F(TopoChangedLabelsInTestMode, ThatAreEmptyAreNotStoredAsTheLastReported) {
  relabel({node("a", "A"), node("b", ""), node("c", "A")});
  EXPECT_EQ(changes(), Changes{ownChange("a", "A")});
}

TEST_F(TopoChangedLabelsInTestMode, AreReportedOnceForTwoNodesInARow) {
  remember("a", "old");
  remember("b", "old");
  relabel({node("a", "A"), node("b", "A"), node("c", "C")});
  EXPECT_EQ(changes(), (Changes{ownChange("a", "A"), ownChange("c", "C")}));
  EXPECT_EQ(remembered("b"), "A");
}

TEST_F(TopoChangedLabelsInTestMode, AreReportedOnceForTwoEventsInARow) {
  relabel({node("a", "A")});
  relabel({node("b", "A")});
  EXPECT_EQ(changes(), Changes{ownChange("a", "A")});
}

TEST_F(TopoChangedLabelsInTestMode, AreReportedAgainAfterAnother) {
  relabel({node("a", "A"), node("b", "B"), node("c", "A")});
  EXPECT_EQ(changes(), (Changes{ownChange("a", "A"), ownChange("b", "B"), ownChange("c", "A")}));
}

TEST_F(TopoChangedLabelsInTestMode, OutsideTestModeAreNotStoredAsTheLastReported) {
  fakes::agent().testSwitchAnswers = {true, false, true};
  relabel({node("a", "A"), node("b", "B"), node("c", "A")});
  EXPECT_EQ(changes(), (Changes{ownChange("a", "A"), ownChange("b", "B")}));
}

TEST_F(TopoChangedLabelsInTestMode, FollowTheSwitchNodeByNode) {
  remember("a", "A");
  fakes::agent().testSwitchAnswers = {false, true};
  relabel({node("a", "A"), node("a", "A"), node("b", "B")});
  EXPECT_EQ(changes(), Changes{ownChange("a", "A")});
  EXPECT_EQ(Journal::count("GetTestSwitch"), 2);
}

TEST_F(TopoChangedLabelsInTestMode, AreCachedBeforeTheNodeIsNamed) {
  remember("a", "A");
  fakes::onCall("ConvertTopoNodeIdToName", 1, fakes::raiseRuntimeError("broken"));
  EXPECT_THROW(relabel({node("a", "B")}), std::runtime_error);
  EXPECT_EQ(remembered("a"), "B");
  EXPECT_FALSE(topo::lastReportedLabel.storeChange("B"));
}

TEST_F(TopoChangedLabelsInTestMode, StayCachedWhenTheEventFails) {
  remember("a", "A");
  remember("b", "B");
  remember("c", "C");
  fakes::onCall("OnObjectAVC", 2, fakes::raiseTransient());
  EXPECT_EQ(handle(kChanged, {node("a", "1"), node("b", "2"), node("c", "3")}), 0);
  EXPECT_EQ(changes(), Changes{ownChange("a", "1")});
  EXPECT_EQ(remembered("a"), "1");
  EXPECT_EQ(remembered("b"), "2");
  EXPECT_EQ(remembered("c"), "C");
}

TEST_F(TopoChangedLabelsInTestMode, AreComparedByteForByte) {
  remember("a", "A");
  relabel({node("a", "a"), node("b", "a "), node("c", "A")});
  EXPECT_EQ(changes(), (Changes{ownChange("a", "a"), ownChange("b", "a "), ownChange("c", "A")}));
}

TEST_F(TopoChangedLabelsInTestMode, OfElementsAreTreatedTheSame) {
  relabel({element("OS=1,NE=5", "N"), element("OS=1,NE=6", "N")});
  EXPECT_EQ(changes(), (Changes{{"[EMS=EMS-1, ManagedElement=5]", "N"}}));
}

}  // namespace
