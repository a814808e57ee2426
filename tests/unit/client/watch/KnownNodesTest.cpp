#include "client/watch/KnownNodes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/WithOrb.h"
#include "tests/unit/client/support/MakeEvents.h"

namespace topoctl {
namespace {

using KnownNodesTest = support::WithOrb;
using Resync = support::WithOrb;

using testing::ElementsAre;
using testing::IsEmpty;
using TopoManagementManager::Node_T;

Node_T nodeBelow(const std::string& id, const std::string& parent) {
  Node_T node = makeNode(id);
  node.relatedName = makeNode(parent).name;
  return node;
}

Node_T nodeNamed(const std::string& id, const std::string& name) {
  Node_T node = makeNode(id);
  node.nativeEMSName = name.c_str();
  return node;
}

KnownNodes knownOf(const std::vector<Node_T>& nodes) {
  KnownNodes known;
  for (const Node_T& node : nodes) {
    known.put(node);
  }
  return known;
}

std::deque<Event> pending(const std::vector<CosNotification::StructuredEvent>& received) {
  std::deque<Event> events;
  for (const auto& event : received) {
    events.push_back(decode(event));
  }
  return events;
}

// The parts of a synthetic event that the tests compare.
struct Difference {
  EventKind kind;
  std::string node;
  std::vector<std::string> attributes;
};

bool operator==(const Difference& a, const Difference& b) {
  return a.kind == b.kind && a.node == b.node && a.attributes == b.attributes;
}

void PrintTo(const Difference& difference, std::ostream* out) {
  *out << "kind " << static_cast<int>(difference.kind) << " of " << difference.node << ": "
       << testing::PrintToString(difference.attributes);
}

Difference created(const std::string& node) {
  return {EventKind::kCreation, node, {}};
}

Difference deleted(const std::string& node) {
  return {EventKind::kDeletion, node, {}};
}

Difference changed(const std::string& node, const std::vector<std::string>& attributes) {
  return {EventKind::kChange, node, attributes};
}

std::vector<Difference> differences(const std::vector<Event>& events) {
  std::vector<Difference> result;
  for (const Event& event : events) {
    EXPECT_TRUE(event.isResync);
    Difference difference{event.kind, (*event.objectName)[1].value.in(), {}};
    for (const ChangedAttribute& attribute : event.attributes) {
      difference.attributes.push_back(attribute.name);
    }
    result.push_back(difference);
  }
  return result;
}

// The native name of a node; "" for an unknown node.
std::string nameIn(const KnownNodes& known, const std::string& id) {
  const auto* const entry = known.find(keyOf(makeNode(id).name));
  return entry == nullptr ? "" : entry->node.nativeEMSName.in();
}

// ---- names

TEST_F(KnownNodesTest, HaveDistinctKeysForDistinctNames) {
  const auto key = [](const std::vector<std::pair<std::string, std::string>>& pairs) {
    globaldefs::NVSList_T name;
    for (const auto& [pairName, value] : pairs) {
      addPair(name, pairName, value);
    }
    return keyOf(name);
  };
  EXPECT_EQ(key({{"a", "b"}}), key({{"a", "b"}}));
  EXPECT_NE(key({{"a", "b"}}), key({{"ab", ""}}));
  EXPECT_NE(key({{"a", "1:b"}}), key({{"a1:b", ""}}));
  EXPECT_NE(key({{"a", "b"}, {"c", "d"}}), key({{"a", "b"}}));
  EXPECT_NE(key({{"a", "b"}, {"c", "d"}}), key({{"c", "d"}, {"a", "b"}}));
  EXPECT_NE(key({}), key({{"", ""}}));
  EXPECT_NE(key({{"a", "b:c"}}), key({{"a:b", "c"}}));
}

// ---- events

TEST_F(KnownNodesTest, ApplyEvents) {
  KnownNodes known = knownOf({makeNode("a")});
  known.apply(decode(creation("1", makeNode("b"))));
  EXPECT_EQ(nameIn(known, "b"), "name of b");
  known.apply(decode(renaming("2", "b", "B")));
  EXPECT_EQ(nameIn(known, "b"), "B");
  known.apply(decode(deletion("3", "a")));
  EXPECT_EQ(nameIn(known, "a"), "");
  EXPECT_EQ(known.size(), 1U);
}

TEST_F(KnownNodesTest, ApplyEventsIdempotently) {
  const auto events =
      pending({creation("1", makeNode("a")), renaming("2", "a", "A"), deletion("3", "b"),
               creation("4", makeNode("b")), renaming("5", "c", "C"), deletion("6", "a")});
  KnownNodes once = knownOf({makeNode("b"), makeNode("c")});
  for (const Event& event : events) {
    once.apply(event);
  }
  KnownNodes twice = once;
  for (const Event& event : events) {
    twice.apply(event);
  }
  EXPECT_THAT(differences(resync(once, twice, {})), IsEmpty());
  EXPECT_EQ(twice.size(), 2U);
}

TEST_F(KnownNodesTest, IgnoreIncompleteEvents) {
  KnownNodes known = knownOf({makeNode("a")});
  known.apply(decode(renaming("1", "other", "x")));
  known.apply(decode(deletion("2", "other")));
  known.apply(decode(lost("3", "4", 2)));
  known.apply(decode(eventOf("NT_OBJECT_CREATION")));
  known.apply(decode(eventOf("NT_OBJECT_DELETION")));
  known.apply(decode(eventOf("NT_ATTRIBUTE_VALUE_CHANGE")));
  Event change = decode(renaming("5", "a", "x"));
  change.attributes = {{"nativeEMSName", std::int64_t{1}},
                       {"nodeParam1", std::string("x")},
                       {"relatedName", true},
                       {"other", std::string("x")}};
  known.apply(change);
  KnownNodes same = knownOf({makeNode("a")});
  EXPECT_THAT(differences(resync(known, same, {})), IsEmpty());
}

TEST_F(KnownNodesTest, IgnoreEventsOfOtherKinds) {
  KnownNodes known = knownOf({makeNode("a")});
  Event event = decode(renaming("1", "a", "A"));
  event.kind = EventKind::kOther;
  known.apply(event);
  EXPECT_EQ(nameIn(known, "a"), "name of a");
  event.kind = EventKind::kLost;
  known.apply(event);
  EXPECT_EQ(nameIn(known, "a"), "name of a");
}

TEST_F(KnownNodesTest, ReplaceANodeOfTheSameNameInPlace) {
  KnownNodes known = knownOf({makeNode("a"), makeNode("b")});
  known.apply(decode(creation("1", nodeNamed("a", "A"))));
  EXPECT_EQ(nameIn(known, "a"), "A");
  KnownNodes read;
  EXPECT_THAT(differences(resync(known, read, {})), ElementsAre(deleted("a"), deleted("b")));
}

TEST_F(KnownNodesTest, ApplyChangesOfEveryField) {
  KnownNodes known = knownOf({makeNode("a")});
  Event change = decode(renaming("1", "a", "A"));
  change.attributes.push_back({"nodeType", std::uint64_t{0}});
  change.attributes.push_back({"nodeParam1", std::int64_t{1}});
  change.attributes.push_back({"nodeParam2", std::int64_t{2}});
  change.attributes.push_back({"relatedName", globaldefs::NVSList_T()});
  change.attributes.push_back({"additionalInfo", globaldefs::NVSList_T()});
  known.apply(change);
  KnownNodes before = knownOf({makeNode("a")});
  EXPECT_THAT(differences(resync(known, before, {})),
              ElementsAre(changed("a", {"nativeEMSName", "nodeType", "nodeParam1", "nodeParam2",
                                        "relatedName", "additionalInfo"})));
}

// ---- differences

TEST_F(Resync, ReturnsNoEventForEqualViews) {
  const KnownNodes known = knownOf({makeNode("a"), nodeBelow("b", "a")});
  KnownNodes read = knownOf({nodeBelow("b", "a"), makeNode("a")});
  EXPECT_THAT(differences(resync(known, read, {})), IsEmpty());
}

TEST_F(Resync, ReturnsDeletionsCreationsAndChangesWithValues) {
  const KnownNodes known = knownOf({makeNode("a"), makeNode("b")});
  KnownNodes read = knownOf({nodeNamed("b", "B"), makeNode("c")});
  const auto events = resync(known, read, {});
  EXPECT_THAT(differences(events),
              ElementsAre(deleted("a"), created("c"), changed("b", {"nativeEMSName"})));
  EXPECT_STREQ(std::get<Node_T>(events[1].object).nativeEMSName, "name of c");
  EXPECT_EQ(std::get<std::string>(events[2].attributes[0].value), "B");
  EXPECT_EQ(events[0].notificationId, std::nullopt);
  EXPECT_EQ(events[0].emsTime, std::nullopt);
}

TEST_F(Resync, OrdersChangesAsTheView) {
  std::vector<Node_T> before;
  std::vector<Node_T> after;
  std::vector<Difference> wanted;
  for (int i = 20; i > 0; --i) {
    before.push_back(makeNode(std::to_string(i)));
    after.push_back(nodeNamed(std::to_string(i), "other"));
    wanted.push_back(changed(std::to_string(i), {"nativeEMSName"}));
  }
  KnownNodes read = knownOf(after);
  EXPECT_EQ(differences(resync(knownOf(before), read, {})), wanted);
}

TEST_F(Resync, ReturnsChangesOfPairs) {
  const auto pairs = [](const char* name, const char* value) {
    Node_T node = makeNode("a");
    node.additionalInfo.length(0);
    addPair(node.additionalInfo, name, value);
    return node;
  };
  const KnownNodes known = knownOf({pairs("n", "v")});
  KnownNodes otherName = knownOf({pairs("m", "v")});
  EXPECT_THAT(differences(resync(known, otherName, {})),
              ElementsAre(changed("a", {"additionalInfo"})));
  KnownNodes otherValue = knownOf({pairs("n", "w")});
  EXPECT_THAT(differences(resync(known, otherValue, {})),
              ElementsAre(changed("a", {"additionalInfo"})));
}

TEST_F(Resync, OrdersDeletionsChildrenFirst) {
  const KnownNodes known = knownOf({makeNode("top"), nodeBelow("leaf", "middle"),
                                    nodeBelow("middle", "top"), nodeBelow("other", "top")});
  KnownNodes read;
  EXPECT_THAT(differences(resync(known, read, {})),
              ElementsAre(deleted("leaf"), deleted("middle"), deleted("other"), deleted("top")));
}

TEST_F(Resync, OrdersCreationsParentsFirst) {
  const KnownNodes known = knownOf({makeNode("top")});
  KnownNodes read = knownOf({nodeBelow("leaf", "middle"), nodeBelow("z", "top"), makeNode("top"),
                             nodeBelow("middle", "top"), nodeBelow("a", "top")});
  EXPECT_THAT(differences(resync(known, read, {})),
              ElementsAre(created("z"), created("middle"), created("a"), created("leaf")));
}

TEST_F(Resync, TerminatesForCycles) {
  const KnownNodes known =
      knownOf({nodeBelow("a", "b"), nodeBelow("b", "c"), nodeBelow("c", "a"), nodeBelow("d", "d")});
  KnownNodes read;
  EXPECT_THAT(
      differences(resync(known, read, {})),
      testing::UnorderedElementsAre(deleted("a"), deleted("b"), deleted("c"), deleted("d")));
}

TEST_F(Resync, HandlesADeepChain) {
  std::vector<Node_T> nodes = {makeNode("0")};
  for (int i = 1; i < 20000; ++i) {
    nodes.push_back(nodeBelow(std::to_string(i), std::to_string(i - 1)));
  }
  const KnownNodes known = knownOf(nodes);
  KnownNodes read;
  const auto deletions = differences(resync(known, read, {}));
  EXPECT_EQ(deletions.size(), 20000U);
  EXPECT_EQ(deletions.front(), deleted("19999"));
  EXPECT_EQ(deletions.back(), deleted("0"));
}

// ---- pending events

TEST_F(Resync, LeavesOutTheChangeOfAPendingEvent) {
  const KnownNodes known = knownOf({makeNode("gone"), makeNode("renamed")});
  KnownNodes read = knownOf({nodeNamed("renamed", "R"), makeNode("new")});
  EXPECT_THAT(differences(resync(known, read,
                                 pending({creation("1", makeNode("new")),
                                          renaming("2", "renamed", "R"), deletion("3", "gone")}))),
              IsEmpty());
}

TEST_F(Resync, LeavesOutTheChangeOfAPendingEventThatIsNewerThanTheView) {
  const KnownNodes known = knownOf({makeNode("gone"), makeNode("renamed")});
  KnownNodes read = known;
  EXPECT_THAT(differences(resync(known, read,
                                 pending({creation("1", makeNode("new")),
                                          renaming("2", "renamed", "R"), deletion("3", "gone")}))),
              IsEmpty());
  EXPECT_EQ(nameIn(read, "renamed"), "R");
  EXPECT_EQ(nameIn(read, "new"), "name of new");
  EXPECT_EQ(read.size(), 2U);
}

TEST_F(Resync, ReturnsTheLostCreationOfANodeThatAPendingEventRenames) {
  const KnownNodes known;
  KnownNodes read = knownOf({makeNode("a")});
  const auto events = resync(known, read, pending({renaming("2", "a", "A")}));
  EXPECT_THAT(differences(events), ElementsAre(created("a")));
  EXPECT_STREQ(std::get<Node_T>(events[0].object).nativeEMSName, "A");
}

TEST_F(Resync, ReturnsNoEventForANodeThatPendingEventsCreateAndDelete) {
  const KnownNodes known;
  for (KnownNodes read : {KnownNodes(), knownOf({makeNode("a")})}) {
    EXPECT_THAT(differences(resync(known, read,
                                   pending({creation("1", makeNode("a")), deletion("2", "a")}))),
                IsEmpty());
    EXPECT_EQ(read.size(), 0U);
  }
}

TEST_F(Resync, ReturnsALostChangeBesideAPendingChange) {
  const KnownNodes known = knownOf({makeNode("a")});
  Node_T node = nodeNamed("a", "A");
  node.nodeParam1 = 1;
  KnownNodes read = knownOf({node});
  EXPECT_THAT(differences(resync(known, read, pending({renaming("2", "a", "A")}))),
              ElementsAre(changed("a", {"nodeParam1"})));
}

// The view lacks the node, so a notification of its deletion was lost.
TEST_F(Resync, ReturnsTheLostDeletionOfANodeThatAPendingEventRenames) {
  const KnownNodes known = knownOf({makeNode("a")});
  KnownNodes read;
  EXPECT_THAT(differences(resync(known, read, pending({renaming("2", "a", "A")}))),
              ElementsAre(deleted("a")));
}

}  // namespace
}  // namespace topoctl
