// Notifications of created and deleted nodes.

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
using TopoManagementManager::Node_T;

constexpr std::uint32_t kUnknownType = 3;

TopoNode_T below(TopoNode_T node, const std::string& parent) {
  node.parentId = parent;
  node.parentType = NS_DOMAIN::kTopoSubnetwork;
  return node;
}

std::string nameOf(const std::string& subnetworkId) {
  return fakes::printed(fakes::nameOf("TopoSubnetwork", subnetworkId));
}

// --- Deleted nodes.

class TopoDeletedNodes : public EventUnderTest {
 protected:
  static Lines names() {
    Lines result;
    for (const Notification& sent : fakes::notificationsSent()) {
      EXPECT_EQ(sent.kind, "deleted");
      result.push_back(fakes::printed(sent.objectName));
    }
    return result;
  }
};

TEST_F(TopoDeletedNodes, AreReportedOneByOneInOrder) {
  EXPECT_EQ(TopoEventMgr::notifyNodesDeleted({subnetwork("b"), subnetwork("a")}), 0);
  EXPECT_EQ(Journal::lines(),
            (Lines{"CheckIFBuf(\"CorbaUtilInterface\")", "ConvertTopoNodeIdToName(\"b\")",
                   "OnObjectDeleted([EMS=EMS-1, TopoSubnetwork=b], true)",
                   "CheckIFBuf(\"CorbaUtilInterface\")", "ConvertTopoNodeIdToName(\"a\")",
                   "OnObjectDeleted([EMS=EMS-1, TopoSubnetwork=a], true)"}));
}

TEST_F(TopoDeletedNodes, AreNamedByTheirType) {
  TopoEventMgr::notifyNodesDeleted({element("OS=1,NE=5")});
  EXPECT_EQ(names(), Lines{"[EMS=EMS-1, ManagedElement=5]"});
}

TEST_F(TopoDeletedNodes, CountAsRelatedToEdgePoints) {
  TopoEventMgr::notifyNodesDeleted({subnetwork("a")});
  EXPECT_TRUE(fakes::notificationsSent().at(0).edgePointRelated);
}

TEST_F(TopoDeletedNodes, AreReportedAlsoWhenTheyCannotBeNamed) {
  fakes::onCall("ConvertTopoNodeIdToName", 1, fakes::giveCode(9));
  TopoNode_T unknown = subnetwork("u");
  unknown.nodeType = kUnknownType;
  TopoEventMgr::notifyNodesDeleted({subnetwork("a"), unknown, subnetwork("b")});
  EXPECT_EQ(names(), (Lines{"[EMS=EMS-1]", "[]", nameOf("b")}));
}

TEST_F(TopoDeletedNodes, HaveNoPairOfThePreviousName) {
  TopoNode_T unknown = subnetwork("u");
  unknown.nodeType = kUnknownType;
  TopoEventMgr::notifyNodesDeleted({subnetwork("a"), unknown});
  EXPECT_EQ(names(), (Lines{nameOf("a"), "[]"}));
}

TEST_F(TopoDeletedNodes, AreReportedWithTheIdZeroToo) {
  TopoEventMgr::notifyNodesDeleted({subnetwork("0")});
  EXPECT_EQ(names(), Lines{nameOf("0")});
}

TEST_F(TopoDeletedNodes, DoNotDependOnTheTestSwitch) {
  TopoEventMgr::notifyNodesDeleted({subnetwork("a")});
  EXPECT_EQ(Journal::count("GetTestSwitch"), 0);
}

// --- Created nodes.

class TopoCreatedNodes : public EventUnderTest {
 protected:
  static int create(const std::vector<TopoNode_T>& nodes) {
    return TopoEventMgr::notifyNodesCreated(nodes);
  }
};

TEST_F(TopoCreatedNodes, AreNamedThenFilledThenReported) {
  EXPECT_EQ(create({below(subnetwork("a", "A"), "p")}), 0);
  EXPECT_EQ(Journal::lines(),
            (Lines{"CheckIFBuf(\"CorbaUtilInterface\")", "ConvertTopoNodeIdToName(\"a\")",
                   "CheckIFBuf(\"CorbaUtilInterface\")", "ConvertTopoNodeIdToName(\"a\")",
                   "CheckIFBuf(\"CorbaUtilInterface\")", "ConvertTopoNodeIdToName(\"p\")",
                   "GetTestSwitch()", "OnObjectCreated([EMS=EMS-1, TopoSubnetwork=a], true)"}));
}

TEST_F(TopoCreatedNodes, AreCarriedAsNodes) {
  TopoNode_T node = below(subnetwork("a", "A"), "p");
  node.attribute3 = 3;
  node.attribute4 = 4;
  create({node});
  const Notification sent = fakes::notificationsSent().at(0);
  EXPECT_EQ(sent.kind, "created");
  EXPECT_TRUE(sent.edgePointRelated);
  EXPECT_EQ(fakes::printed(sent.objectName), nameOf("a"));
  const Node_T carried = createdNode(0);
  EXPECT_EQ(carried.nodeType, 1U);
  EXPECT_EQ(fakes::printed(carried.name), nameOf("a"));
  EXPECT_EQ(fakes::printed(carried.relatedName), nameOf("p"));
  EXPECT_STREQ(carried.nativeEMSName.in(), "A");
  EXPECT_EQ(carried.nodeParam1, 3);
  EXPECT_EQ(carried.nodeParam2, 4);
  EXPECT_EQ(carried.additionalInfo.length(), 0U);
}

TEST_F(TopoCreatedNodes, AreReportedInOrderEachWithItsOwnCopy) {
  create({subnetwork("a", "A"), element("OS=1,NE=5", "B")});
  ASSERT_EQ(fakes::notificationsSent().size(), 2U);
  EXPECT_STREQ(createdNode(0).nativeEMSName.in(), "A");
  EXPECT_EQ(createdNode(0).nodeType, 1U);
  EXPECT_STREQ(createdNode(1).nativeEMSName.in(), "B");
  EXPECT_EQ(createdNode(1).nodeType, 0U);
  EXPECT_EQ(fakes::printed(fakes::notificationsSent()[1].objectName),
            "[EMS=EMS-1, ManagedElement=5]");
}

TEST_F(TopoCreatedNodes, HaveTheRelatedNameOfThePreviousNodeWhenTheyHaveNoParent) {
  for (const char* noParent : {"0", ""}) {
    fakes::resetAgent();
    create({below(subnetwork("a"), "p"), below(subnetwork("b"), noParent)});
    EXPECT_EQ(fakes::printed(createdNode(1).name), nameOf("b"));
    EXPECT_EQ(fakes::printed(createdNode(1).relatedName), nameOf("p"));
  }
}

TEST_F(TopoCreatedNodes, HaveNoFieldOfThePreviousEvent) {
  create({below(subnetwork("a"), "p")});
  create({below(subnetwork("b"), "0")});
  EXPECT_EQ(createdNode(1).relatedName.length(), 0U);
}

TEST_F(TopoCreatedNodes, BeginWithAFreshRecord) {
  TopoNode_T unknown = subnetwork("u", "U");
  unknown.nodeType = kUnknownType;
  create({unknown});
  const Node_T carried = createdNode(0);
  EXPECT_EQ(carried.nodeType, 0U);
  EXPECT_EQ(carried.name.length(), 0U);
  EXPECT_EQ(carried.relatedName.length(), 0U);
  EXPECT_STREQ(carried.nativeEMSName.in(), "");
  EXPECT_EQ(carried.nodeParam1, 0);
  EXPECT_EQ(carried.nodeParam2, 0);
  EXPECT_EQ(carried.additionalInfo.length(), 0U);
}

TEST_F(TopoCreatedNodes, OfAnUnknownTypeAreReportedAsThePreviousNode) {
  TopoNode_T unknown = subnetwork("u", "U");
  unknown.nodeType = kUnknownType;
  create({below(subnetwork("a", "A"), "p"), unknown});
  ASSERT_EQ(fakes::notificationsSent().size(), 2U);
  EXPECT_EQ(fakes::printed(fakes::notificationsSent()[1].objectName), nameOf("a"));
  EXPECT_EQ(fakes::printed(createdNode(1).relatedName), nameOf("p"));
  EXPECT_STREQ(createdNode(1).nativeEMSName.in(), "A");
}

TEST_F(TopoCreatedNodes, KeepFieldsOfThePreviousNodeAfterAFailedStep) {
  TopoNode_T first = below(subnetwork("a", "A"), "p");
  first.attribute3 = 3;
  first.attribute4 = 4;
  TopoNode_T second = below(element("OS=1,NE=5", "B"), "q");
  second.parentType = kUnknownType;
  second.attribute3 = 5;
  second.attribute4 = 6;
  create({first, second});
  const Node_T carried = createdNode(1);
  EXPECT_EQ(carried.nodeType, 0U);
  EXPECT_EQ(fakes::printed(carried.name), "[EMS=EMS-1, ManagedElement=5]");
  EXPECT_EQ(fakes::printed(carried.relatedName), nameOf("p"));
  EXPECT_STREQ(carried.nativeEMSName.in(), "A");
  EXPECT_EQ(carried.nodeParam1, 3);
  EXPECT_EQ(carried.nodeParam2, 4);
}

TEST_F(TopoCreatedNodes, AreReportedWithThePartialNameOfAFailedConversion) {
  fakes::onEveryCall("ConvertTopoNodeIdToName", fakes::giveCode(9));
  create({subnetwork("a", "A")});
  EXPECT_EQ(fakes::printed(fakes::notificationsSent().at(0).objectName), "[EMS=EMS-1]");
  EXPECT_EQ(createdNode(0).nodeType, 1U);
  EXPECT_STREQ(createdNode(0).nativeEMSName.in(), "");
  EXPECT_EQ(logged(), Lines{});
}

TEST_F(TopoCreatedNodes, WithTheIdZeroAreNamedButNotFilled) {
  create({subnetwork("a", "A"), subnetwork("0", "B")});
  EXPECT_EQ(fakes::printed(createdNode(1).name), nameOf("0"));
  EXPECT_STREQ(createdNode(1).nativeEMSName.in(), "A");
}

TEST_F(TopoCreatedNodes, CarryTheVendorInTestMode) {
  fakes::agent().testSwitch = true;
  create({subnetwork("a"), subnetwork("b")});
  for (const std::size_t nth : {0U, 1U}) {
    EXPECT_EQ(fakes::printed(createdNode(nth).additionalInfo),
              "[Vendor=KORVANE TECHNOLOGIES CO., LTD]");
  }
}

TEST_F(TopoCreatedNodes, KeepTheVendorWhenTheSwitchIsTurnedOffBetweenThem) {
  fakes::agent().testSwitchAnswers = {true, false};
  create({subnetwork("a"), subnetwork("b")});
  EXPECT_EQ(createdNode(1).additionalInfo.length(), 1U);
}

TEST_F(TopoCreatedNodes, AreNotCachedInTestMode) {
  fakes::agent().testSwitch = true;
  const auto before = topo::nodeLabelCache.identifiers();
  create({subnetwork(own("a"), "A")});
  EXPECT_EQ(topo::nodeLabelCache.identifiers(), before);
}

}  // namespace
