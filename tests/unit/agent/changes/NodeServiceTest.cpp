// Creates, removes and renames nodes of the served network.

#include "agent/changes/NodeService.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <memory>

#include "agent/base/FailureCodes.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/Pairs.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/unit/agent/changes/ChangingHost.h"
#include "tests/unit/agent/support/StoredOwner.h"

namespace {

using agent::NetworkModel;
using agent::NodeService;
using agent::Outcome;
using NS_DOMAIN::kTopoElement;
using NS_DOMAIN::kTopoSubnetwork;
using NS_DOMAIN::TopoNode_T;

agent::Network smallNetwork() {
  return readText(withFormat(R"(
    "ems": "E",
    "topoNodes": [
      {"id": "core", "name": "Core"},
      {"id": "west", "parent": "core", "name": "West"},
      {"id": "NE=1", "parent": "west", "name": "One", "type": 1},
      {"id": "east", "parent": "core", "name": "East"},
      {"id": "NE=2", "parent": "east", "name": "Two", "type": 1},
      {"id": "NE=3", "parent": "west", "name": "Three", "type": 1},
      {"id": "third", "parent": "east", "name": "Third", "type": 3},
      {"id": "QNMAP_PHY_SUBMAP", "name": "Map"}],
    "networkElements": [
      {"number": 1, "name": "One", "shown": true}, {"number": 5, "name": "Five"}],
    "clockPositions": [{"reference": "NE=1", "label": "One"}],
    "clockLinks": [{"id": "k", "name": "SDH/k", "a": "NE=1"}],
    "objectLabels": [{"type": 54, "id": "west", "label": "Wild"}])"));
}

class NodeServiceTest : public testing::Test {
 protected:
  NodeService& nodes() { return host_->nodes(); }
  NetworkModel& model() { return host_->model(); }

  // Serves the small network with one more node at its end, which only an older store can have.
  void serveWith(const TopoNode_T& node) {
    agent::Network network = smallNetwork();
    network.topoNodes.push_back(node);
    path_ = directory_.file("older.db");
    host_ = std::make_unique<ChangingHost>(path_, network);
  }

  void restart() {
    host_.reset();
    host_ = std::make_unique<ChangingHost>(path_, agent::Network());
  }

  void expectDone(const Outcome& outcome) {
    EXPECT_EQ(agent::kSuccess, outcome.code) << outcome.reason;
    EXPECT_EQ("", outcome.reason);
    EXPECT_EQ(host_->stored(), host_->seen());
  }

  // Expects a failure without any effect.
  template <typename Change>
  void expectRefused(std::uint32_t code, const std::string& reason, Change change) {
    const agent::Network before = host_->seen();
    const Outcome outcome = change();
    EXPECT_EQ(code, outcome.code);
    EXPECT_EQ(reason, outcome.reason);
    EXPECT_EQ(before, host_->seen());
    EXPECT_EQ(before, host_->stored());
    EXPECT_EQ(NodeEvents(), host_->events());
  }

  void expectNotCreated(std::uint32_t code, const std::string& reason, const TopoNode_T& node) {
    expectRefused(code, reason, [&] { return nodes().create(node); });
  }

  // The number of removed nodes.
  std::size_t remove(const std::string& id) {
    std::size_t removed = 77;
    expectDone(nodes().remove(id, removed));
    return removed;
  }

  std::vector<std::string> ids() {
    std::vector<TopoNode_T> all;
    model().appendTopoNodes(all);
    std::vector<std::string> result;
    for (const TopoNode_T& node : all) {
      result.push_back(node.nodeId);
    }
    return result;
  }

  std::string nameOfNode(const std::string& id) {
    std::vector<TopoNode_T> all;
    model().appendTopoNodes(all);
    for (const TopoNode_T& node : all) {
      if (node.nodeId == id) {
        return node.nativeName;
      }
    }
    return "no such node";
  }

  bool isShown(std::int32_t number) {
    std::vector<NS_DOMAIN::NEIndex> shown;
    model().appendNEIndexes(shown, true);
    for (const auto& index : shown) {
      if (index.number == number) {
        return true;
      }
    }
    return false;
  }

  const support::TemporaryDirectory directory_;
  std::string path_ = directory_.file("store.db");
  std::unique_ptr<ChangingHost> host_ = std::make_unique<ChangingHost>(path_, smallNetwork());
};

// --- Creating.

TEST_F(NodeServiceTest, AppendsANodeWithAllStoredFields) {
  TopoNode_T node = nodeOf("south", "core", kTopoSubnetwork, "Süden");
  node.attribute3 = -2147483647;
  node.attribute4 = 12;
  node.extendedAttributes = {{"location", "Hall||2"}, {"location", ""}};
  expectDone(nodes().create(node));
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(node, host_->seen().topoNodes.back());
    EXPECT_TRUE(model().hasTopoSubnetwork("south"));
    restart();
  }
}

TEST_F(NodeServiceTest, RaisesAnEventWithTheCreatedNode) {
  TopoNode_T node = nodeOf("south", "core", kTopoSubnetwork, "South");
  node.extendedAttributes = {{"a", "b"}};
  node.text4 = "carried only";
  expectDone(nodes().create(node));
  const auto events = host_->takeEvents();
  ASSERT_EQ(1U, events.size());
  EXPECT_EQ((NodeEvent{EVENT_TOPO_NODE_CREATED, {"south"}}), withIds(events[0]));
  EXPECT_EQ("core", events[0].nodes[0].parentId);
  EXPECT_EQ("South", events[0].nodes[0].nativeName);
  EXPECT_EQ(node.extendedAttributes, events[0].nodes[0].extendedAttributes);
  EXPECT_EQ("", events[0].nodes[0].text4);
}

TEST_F(NodeServiceTest, CreatesBelowNewNodesAndEveryRootMarker) {
  expectDone(nodes().create(nodeOf("a", "core")));
  expectDone(nodes().create(nodeOf("NE=9", "a", kTopoElement)));
  expectDone(nodes().create(nodeOf("b", "")));
  expectDone(nodes().create(nodeOf("c", "0")));
  expectDone(nodes().create(nodeOf("d", "QNMAP_PHY_SUBMAP")));
  EXPECT_EQ((NodeEvents{{EVENT_TOPO_NODE_CREATED, {"a"}},
                        {EVENT_TOPO_NODE_CREATED, {"NE=9"}},
                        {EVENT_TOPO_NODE_CREATED, {"b"}},
                        {EVENT_TOPO_NODE_CREATED, {"c"}},
                        {EVENT_TOPO_NODE_CREATED, {"d"}}}),
            host_->events());
}

TEST_F(NodeServiceTest, CreatesANodeWithARootMarkerAsItsId) {
  expectDone(nodes().create(nodeOf("0", "")));
  expectDone(nodes().create(nodeOf("below", "0")));
  EXPECT_EQ(1U, remove("0"));
  EXPECT_EQ("below", ids().back());
}

TEST_F(NodeServiceTest, CreatesObjectsThatAcceptAttributes) {
  expectDone(nodes().create(nodeOf("south", "core")));
  expectDone(nodes().create(nodeOf("EQ=1,ONE=8", "south", kTopoElement)));
  for (const auto& [objectClass, value] : Pairs{{"TopoSubnetwork", "south"}, {"ONE", "8"}}) {
    const auto name = nameOf({{"EMS", "E"}, {objectClass, value}});
    EXPECT_EQ(agent::kSuccess, host_->attributes().setNativeName(name, "named").code);
  }
  EXPECT_EQ("named", nameOfNode("south"));
  EXPECT_EQ("named", nameOfNode("EQ=1,ONE=8"));
}

TEST_F(NodeServiceTest, RejectsADuplicateNode) {
  expectNotCreated(agent::kAlreadyExists, "node \"west\" exists already", nodeOf("west", "core"));
  expectNotCreated(agent::kAlreadyExists, "node \"third\" exists already", nodeOf("third", "none"));
}

TEST_F(NodeServiceTest, RejectsAnElementWithoutANumber) {
  for (const std::string id :
       {"foo", "7x", "", "NE=", "NE=x", "NE=5,rack", "5,EQ=", "4294967296"}) {
    const std::string reason =
        id.empty() ? "the id of a node must not be empty"
                   : "node \"" + id + "\" has no number, which the id of an " + "element needs";
    expectNotCreated(agent::kInvalidName, reason, nodeOf(id, "core", kTopoElement));
  }
  for (const std::string id : {"7", "-7", "+8", "0", "NE=-9", "NE=0", "EQ=4,ONE=010", "EQ=11"}) {
    expectDone(nodes().create(nodeOf(id, "core", kTopoElement)));
  }
  expectDone(nodes().create(nodeOf("NE=x", "core")));
}

TEST_F(NodeServiceTest, RejectsASecondNodeOfAnElement) {
  for (const std::string id : {"1", "01", "+1", "NE=01", "EQ=1,NE=1", "EQ=1"}) {
    expectNotCreated(agent::kAlreadyExists,
                     "node \"" + id + "\" is shown as ManagedElement=1, as node \"NE=1\" is",
                     nodeOf(id, "core", kTopoElement));
  }
  for (const std::string id : {"ONE=1", "OS=1", "NE=-1", "EQ=-1"}) {
    expectDone(nodes().create(nodeOf(id, "core", kTopoElement)));
  }
  expectDone(nodes().create(nodeOf("1", "core")));
  remove("NE=1");
  expectDone(nodes().create(nodeOf("01", "core", kTopoElement)));
}

TEST_F(NodeServiceTest, ServesAStoreWithSeveralNodesOfAnElement) {
  serveWith(nodeOf("01", "east", kTopoElement, "One again"));
  restart();
  EXPECT_EQ("One again", nameOfNode("01"));
  expectNotCreated(agent::kAlreadyExists,
                   "node \"+1\" is shown as ManagedElement=1, as node \"NE=1\" is",
                   nodeOf("+1", "core", kTopoElement));
}

TEST_F(NodeServiceTest, TakesTheTypeOfAParentFromTheParent) {
  for (const auto& [parent, type] : std::vector<std::pair<std::string, std::uint32_t>>{
           {"NE=1", 1}, {"core", 2}, {"third", 2}, {"", 2}, {"0", 2}}) {
    TopoNode_T node = nodeOf("below " + parent, parent);
    node.parentType = NodeService::kTypeOfParent;
    expectDone(nodes().create(node));
    EXPECT_EQ(type, model().topoNode(node.nodeId)->parentType) << parent;
  }
}

TEST_F(NodeServiceTest, AcceptsAnyTypeForTheParentOfARoot) {
  TopoNode_T node = nodeOf("a", "");
  node.parentType = kTopoElement;
  expectDone(nodes().create(node));
  EXPECT_EQ(kTopoElement, model().topoNode("a")->parentType);
  expectDone(nodes().move("a", "", kTopoSubnetwork));
  EXPECT_EQ(kTopoSubnetwork, model().topoNode("a")->parentType);
  EXPECT_EQ((NodeEvents{{EVENT_TOPO_NODE_CREATED, {"a"}}, {EVENT_TOPO_NODE_CHANGED, {"a"}}}),
            host_->events());
}

TEST_F(NodeServiceTest, RejectsATypeThatTheParentDoesNotHave) {
  expectNotCreated(agent::kInvalidName,
                   "the parent of node \"a\", node \"NE=1\", is an element, not a subnetwork",
                   nodeOf("a", "NE=1"));
  TopoNode_T node = nodeOf("a", "core");
  node.parentType = kTopoElement;
  expectNotCreated(agent::kInvalidName,
                   "the parent of node \"a\", node \"core\", is a subnetwork, not an element",
                   node);
}

TEST_F(NodeServiceTest, RejectsAnUnknownParent) {
  expectNotCreated(agent::kEntityNotFound, "no node \"n\\x0ane\" to be the parent of node \"a\"",
                   nodeOf("a", "n\nne"));
}

TEST_F(NodeServiceTest, RejectsANodeThatIsItsOwnParent) {
  expectNotCreated(agent::kInvalidName, "node \"a\" cannot be its own parent", nodeOf("a", "a"));
}

TEST_F(NodeServiceTest, CreatesOnlyElementsAndSubnetworks) {
  for (const std::uint32_t type : {0U, 3U, 4294967295U}) {
    expectNotCreated(agent::kInvalidName,
                     "the type of node \"a\" must be 1 or 2, not " + std::to_string(type),
                     nodeOf("a", "core", type));
  }
}

TEST_F(NodeServiceTest, RejectsTextsThatAFileCannotContain) {
  const std::string nul("x\0y", 3);
  expectNotCreated(agent::kInvalidName, "the id of a node must not be empty", nodeOf("", "core"));
  expectNotCreated(agent::kInvalidName, "the id of node \"\\xff\" is not UTF-8 at byte 0",
                   nodeOf("\xff", "core"));
  expectNotCreated(agent::kInvalidName, "the id of node \"x\\x00y\" contains a NUL character",
                   nodeOf(nul, "core"));
  expectNotCreated(agent::kInvalidName, "the parent of node \"a\" is not UTF-8 at byte 1",
                   nodeOf("a", "c\xc0"));
  expectNotCreated(agent::kInvalidName, "the name of node \"a\" contains a NUL character",
                   nodeOf("a", "core", kTopoSubnetwork, nul));
  expectNotCreated(agent::kInvalidName, "the name of node \"a\" has more than 1048576 bytes",
                   nodeOf("a", "core", kTopoSubnetwork, std::string(1048577, 'x')));
  TopoNode_T node = nodeOf("a", "core");
  node.extendedAttributes = {{"fine", "fine"}, {"k\xff", ""}};
  expectNotCreated(agent::kInvalidName, "an attribute of node \"a\" is not UTF-8 at byte 1", node);
  node.extendedAttributes = {{"k", nul}};
  expectNotCreated(agent::kInvalidName, "an attribute of node \"a\" contains a NUL character",
                   node);
}

TEST_F(NodeServiceTest, StoresUnusualAndLongTextsUnchanged) {
  const std::string hard = "'; DROP TABLE topo_node; --\n\t\xf0\x9f\x98\x80";
  expectDone(nodes().create(nodeOf(hard, "core", kTopoSubnetwork, std::string(1048576, 'x'))));
  expectDone(nodes().create(nodeOf("below", hard)));
  EXPECT_EQ(2U, remove(hard));
}

TEST_F(NodeServiceTest, StartsANetworkInANewStore) {
  const std::string path = directory_.file("new.db");
  {
    ChangingHost host(path);
    EXPECT_EQ(agent::kSuccess, host.nodes().create(nodeOf("first", "")).code);
    EXPECT_FALSE(host.store().isNew());
  }
  EXPECT_FALSE(agent::SqliteStore::needsNetwork(path));
  agent::Network expected;
  expected.topoNodes = {nodeOf("first", "")};
  EXPECT_EQ(expected, ChangingHost(path).seen());
}

// --- The list of elements.

TEST_F(NodeServiceTest, ShowsAListedElementOnceAfterItGetsANode) {
  ASSERT_FALSE(isShown(5));
  expectDone(nodes().create(nodeOf("EQ=2,NE=5", "core", kTopoElement)));
  EXPECT_TRUE(isShown(5));
  restart();
  EXPECT_TRUE(isShown(5));
  remove("EQ=2,NE=5");
  EXPECT_FALSE(isShown(5));
  restart();
  EXPECT_FALSE(isShown(5));
}

TEST_F(NodeServiceTest, MarksAnElementUntilItsLastNodeIsRemoved) {
  agent::Network network = smallNetwork();
  network.networkElements[1].shown = network.networkElements[1].shownForNode = true;
  network.topoNodes.push_back(nodeOf("NE=5", "core", kTopoElement));
  network.topoNodes.push_back(nodeOf("5", "NE=5", kTopoElement));
  network.topoNodes.push_back(nodeOf("EQ=1,NE=5", "east", kTopoElement));
  path_ = directory_.file("older.db");
  host_ = std::make_unique<ChangingHost>(path_, network);
  EXPECT_EQ(2U, remove("NE=5"));
  EXPECT_TRUE(isShown(5));
  remove("east");
  EXPECT_FALSE(isShown(5));
}

TEST_F(NodeServiceTest, KeepsTheMarkFromANetworkFile) {
  remove("NE=1");
  EXPECT_TRUE(isShown(1));
  expectDone(nodes().create(nodeOf("NE=1", "core", kTopoElement)));
  remove("NE=1");
  EXPECT_TRUE(isShown(1));
}

TEST_F(NodeServiceTest, MarksNoElementForANodeOfAnotherClassOrType) {
  for (const auto& node : {nodeOf("ONE=5", "", kTopoElement), nodeOf("OS=5", "", kTopoElement),
                           nodeOf("5", "", kTopoSubnetwork)}) {
    expectDone(nodes().create(node));
    EXPECT_FALSE(isShown(5)) << node.nodeId;
    remove(node.nodeId);
  }
}

// --- Removing.

TEST_F(NodeServiceTest, RemovesANodeAfterItsDescendants) {
  expectDone(nodes().create(nodeOf("NE=4", "west", kTopoElement)));
  host_->events();
  EXPECT_EQ(8U, remove("core"));
  EXPECT_EQ((NodeEvents{{EVENT_TOPO_NODE_DELETED,
                         {"NE=1", "NE=3", "NE=4", "west", "NE=2", "third", "east", "core"}}}),
            host_->events());
  EXPECT_EQ((std::vector<std::string>{"QNMAP_PHY_SUBMAP"}), ids());
  restart();
  EXPECT_EQ((std::vector<std::string>{"QNMAP_PHY_SUBMAP"}), ids());
}

TEST_F(NodeServiceTest, RaisesAnEventWithTheRecordsOfTheRemovedNodes) {
  remove("NE=3");
  const auto events = host_->takeEvents();
  ASSERT_EQ(1U, events.size());
  ASSERT_EQ(1U, events[0].nodes.size());
  EXPECT_EQ("west", events[0].nodes[0].parentId);
  EXPECT_EQ("Three", events[0].nodes[0].nativeName);
}

TEST_F(NodeServiceTest, KeepsTheRootsWhenANodeWithARootMarkerAsIdIsRemoved) {
  EXPECT_EQ(1U, remove("QNMAP_PHY_SUBMAP"));
  EXPECT_EQ(7U, ids().size());
}

TEST_F(NodeServiceTest, RejectsTheRemovalOfAnUnknownNode) {
  std::size_t removed = 77;
  expectRefused(agent::kEntityNotFound, "no node \"none\"",
                [&] { return nodes().remove("none", removed); });
  EXPECT_EQ(0U, removed);
  expectRefused(agent::kEntityNotFound, "no node \"\"",
                [&] { return nodes().remove("", removed); });
  expectRefused(agent::kEntityNotFound, "no node \"\\xff\"",
                [&] { return nodes().remove("\xff", removed); });
}

TEST_F(NodeServiceTest, CreatesARemovedNodeAgain) {
  for (int i = 0; i < 3; ++i) {
    remove("west");
    expectDone(nodes().create(nodeOf("west", "core")));
    expectDone(nodes().create(nodeOf("NE=1", "west", kTopoElement)));
    EXPECT_EQ("NE=1", ids().back());
  }
}

TEST_F(NodeServiceTest, RemovesTheAttributesOfARemovedObject) {
  const auto west = nameOf({{"EMS", "E"}, {"TopoSubnetwork", "west"}});
  const auto one = nameOf({{"EMS", "E"}, {"ManagedElement", "1"}});
  for (const auto& name : {west, one}) {
    auto info = nameOf({{"a", "1"}});
    EXPECT_TRUE(host_->attributes().setUserLabel(name, "label", false).ok());
    EXPECT_TRUE(host_->attributes().setOwner(name, "owner").ok());
    EXPECT_TRUE(host_->attributes().setAdditionalInfo(name, info).ok());
  }
  remove("west");
  EXPECT_EQ(agent::kEntityNotFound, host_->attributes().setOwner(west, "x").code);
  expectDone(nodes().create(nodeOf("west", "core")));
  expectDone(nodes().create(nodeOf("NE=1", "west", kTopoElement)));
  for (int i = 0; i < 2; ++i) {
    for (const agent::ObjectKey& key :
         {agent::ObjectKey{54, "west"}, agent::ObjectKey{1, "NE=1"}}) {
      EXPECT_EQ("", model().labelOf(key.type, key.id));
      EXPECT_EQ("", storedOwner(host_->store(), key));
      EXPECT_TRUE(host_->store().additionalInfoOf(key).empty());
    }
    restart();
  }
}

TEST_F(NodeServiceTest, KeepsTheAttributesOfAnObjectWithAnotherNode) {
  serveWith(nodeOf("EQ=1,NE=1", "east", kTopoElement));
  const auto one = nameOf({{"EMS", "E"}, {"ManagedElement", "1"}});
  EXPECT_TRUE(host_->attributes().setUserLabel(one, "label", false).ok());
  remove("NE=1");
  EXPECT_EQ("label", model().labelOf(1, "NE=1"));
  remove("EQ=1,NE=1");
  EXPECT_EQ("", model().labelOf(1, "NE=1"));
  restart();
  EXPECT_EQ("", model().labelOf(1, "NE=1"));
}

TEST_F(NodeServiceTest, RemovesAVeryDeepChain) {
  agent::Network network;
  for (int i = 0; i < 200000; ++i) {
    network.topoNodes.push_back(
        nodeOf("d" + std::to_string(i), i == 0 ? "" : "d" + std::to_string(i - 1)));
  }
  ChangingHost host(agent::SqliteStore::kInMemory, network);
  std::size_t removed = 0;
  EXPECT_EQ(agent::kSuccess, host.nodes().remove("d1", removed).code);
  EXPECT_EQ(199999U, removed);
  const auto events = host.takeEvents();
  ASSERT_EQ(1U, events.size());
  EXPECT_EQ("d199999", events[0].nodes.front().nodeId);
  EXPECT_EQ("d1", events[0].nodes.back().nodeId);
}

TEST_F(NodeServiceTest, RemovesManyNodesOfOneObjectInLinearTime) {
  agent::Network network;
  network.topoNodes.push_back(nodeOf("top", ""));
  for (int i = 0; i < 100000; ++i) {
    network.topoNodes.push_back(nodeOf("EQ=" + std::to_string(i) + ",NE=1", "top", kTopoElement));
  }
  ChangingHost host(agent::SqliteStore::kInMemory, network);
  std::size_t removed = 0;
  EXPECT_EQ(agent::kSuccess, host.nodes().remove("top", removed).code);
  EXPECT_EQ(100001U, removed);
}

// Only a manipulated store can contain a cycle.
TEST(NodeServiceOnADamagedStore, RejectsTheRemovalOfANodeInACycle) {
  agent::Network network;
  network.topoNodes = {nodeOf("a", "b"), nodeOf("b", "a"), nodeOf("c", "gone")};
  ChangingHost host(agent::SqliteStore::kInMemory, network);
  std::size_t removed = 0;
  const Outcome outcome = host.nodes().remove("a", removed);
  EXPECT_EQ(agent::kInternalError, outcome.code);
  EXPECT_EQ("node \"a\": a node below it is its own ancestor", outcome.reason);
  EXPECT_EQ(agent::kSuccess, host.nodes().remove("c", removed).code);
  EXPECT_EQ(1U, removed);
}

// --- Renaming.

TEST_F(NodeServiceTest, RenamesANode) {
  expectDone(nodes().rename("west", "Wést"));
  const auto events = host_->takeEvents();
  ASSERT_EQ(1U, events.size());
  EXPECT_EQ((NodeEvent{EVENT_TOPO_NODE_CHANGED, {"west"}}), withIds(events[0]));
  EXPECT_EQ("Wést", events[0].nodes[0].nativeName);
  EXPECT_EQ("core", events[0].nodes[0].parentId);
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ("Wést", nameOfNode("west"));
    restart();
  }
}

TEST_F(NodeServiceTest, RenamesAllRecordsOfTheElement) {
  serveWith(nodeOf("EQ=1,NE=1", "east", kTopoElement));
  expectDone(nodes().rename("NE=1", "Uno"));
  EXPECT_EQ((NodeEvents{{EVENT_TOPO_NODE_CHANGED, {"NE=1", "EQ=1,NE=1"}}}), host_->events());
  EXPECT_EQ("Uno", nameOfNode("EQ=1,NE=1"));
  EXPECT_EQ("Uno", model().clockPositions()[0].label);
}

TEST_F(NodeServiceTest, RelabelsEveryClockPositionOfAnElement) {
  agent::Network more;
  for (const char* reference : {"SSU=1", "SEC=1", "NE=2"}) {
    more.clockPositions.emplace_back().reference = reference;
  }
  agent::ImportSummary summary;
  expectDone(nodes().import(more, summary));
  expectDone(nodes().rename("NE=1", "Uno"));
  for (int i = 0; i < 2; ++i) {
    Pairs labels;
    for (const auto& position : model().clockPositions()) {
      labels.emplace_back(position.reference, position.label);
    }
    EXPECT_EQ((Pairs{{"NE=1", "Uno"}, {"SSU=1", "Uno"}, {"SEC=1", "Uno"}, {"NE=2", ""}}), labels);
    restart();
  }
}

TEST_F(NodeServiceTest, RenamesNodesOfOtherTypes) {
  expectDone(nodes().rename("third", "3"));
  EXPECT_EQ((NodeEvents{{EVENT_TOPO_NODE_CHANGED, {"third"}}}), host_->events());
}

TEST_F(NodeServiceTest, RaisesNoEventForAnUnchangedName) {
  expectDone(nodes().rename("west", "West"));
  EXPECT_EQ(NodeEvents(), host_->events());
  expectDone(nodes().rename("west", ""));
  EXPECT_EQ((NodeEvents{{EVENT_TOPO_NODE_CHANGED, {"west"}}}), host_->events());
  expectDone(nodes().rename("west", ""));
  EXPECT_EQ(NodeEvents(), host_->events());
}

TEST_F(NodeServiceTest, RejectsBadNamesAndUnknownNodes) {
  expectRefused(agent::kEntityNotFound, "no node \"none\"",
                [&] { return nodes().rename("none", "x"); });
  expectRefused(agent::kInvalidName, "the name of node \"west\" is not UTF-8 at byte 0",
                [&] { return nodes().rename("west", "\xff"); });
  expectRefused(agent::kInvalidName, "the name of node \"west\" has more than 1048576 bytes",
                [&] { return nodes().rename("west", longText('x')); });
}

// --- Native names that are set as attributes.

TEST_F(NodeServiceTest, RaisesAnEventForTheNativeNameOfANode) {
  const auto setName = [&](const std::string& objectClass, const std::string& value,
                           const std::string& text) {
    const auto name = nameOf({{"EMS", "E"}, {objectClass, value}});
    EXPECT_EQ(agent::kSuccess, host_->attributes().setNativeName(name, text).code) << value;
  };
  setName("TopoSubnetwork", "west", "W");
  setName("ManagedElement", "1", "Uno");
  EXPECT_EQ((NodeEvents{{EVENT_TOPO_NODE_CHANGED, {"west"}}, {EVENT_TOPO_NODE_CHANGED, {"NE=1"}}}),
            host_->events());
  setName("TopoSubnetwork", "west", "W");
  setName("ManagedElement", "1", "Uno");
  setName("ManagedElement", "5", "no node");
  setName("ClockTopoLinkId", "k", "no node either");
  EXPECT_EQ(NodeEvents(), host_->events());
  EXPECT_EQ(host_->stored(), host_->seen());
}

// --- Disks and processes that fail.

TEST_F(NodeServiceTest, KeepsChangesWhenTheProcessIsKilled) {
  host_.reset();
  const int status = statusOfChild([&] {
    ChangingHost host(path_, agent::Network());
    std::size_t removed = 0;
    agent::ImportSummary summary;
    agent::Network more;
    more.topoNodes.push_back(nodeOf("imported", "created"));
    EXPECT_TRUE(host.nodes().create(nodeOf("created", "core")).ok());
    EXPECT_TRUE(host.nodes().rename("core", "CORE").ok());
    EXPECT_TRUE(host.nodes().remove("west", removed).ok());
    EXPECT_TRUE(host.nodes().import(more, summary).ok());
    raise(SIGKILL);
  });
  ASSERT_TRUE(wasKilledBy(status, SIGKILL));
  restart();
  EXPECT_EQ((std::vector<std::string>{"core", "east", "NE=2", "third", "QNMAP_PHY_SUBMAP",
                                      "created", "imported"}),
            ids());
  EXPECT_EQ("CORE", nameOfNode("core"));
}

void limitFileSize(rlim_t bytes) {
  const rlimit limit{bytes, RLIM_INFINITY};
  setrlimit(RLIMIT_FSIZE, &limit);
}

// Runs in a child process with a file size limit. The exit status is the number of failed checks.
TEST_F(NodeServiceTest, RecoversFromAFailureOfTheStore) {
  host_.reset();
  const int status = statusOfChild([&] {
    signal(SIGXFSZ, SIG_IGN);
    ChangingHost host(path_, agent::Network());
    const agent::Network before = host.seen();
    const std::string text(100000, 'x');
    std::size_t removed = 0;
    limitFileSize(1000);
    const Outcome created = host.nodes().create(nodeOf("a", "core", kTopoSubnetwork, text));
    const Outcome renamed = host.nodes().rename("west", text);
    const Outcome gone = host.nodes().remove("core", removed);
    limitFileSize(RLIM_INFINITY);
    int wrong = 0;
    for (const Outcome& outcome : {created, renamed, gone}) {
      wrong += outcome.code == agent::kInternalError ? 0 : 1;
    }
    wrong += renamed.reason.rfind("node \"west\": " + path_ + ": ", 0) == 0 ? 0 : 1;
    wrong += removed == 0 && host.events().empty() ? 0 : 1;
    wrong += host.seen() == before && host.stored() == before ? 0 : 1;
    wrong += host.nodes().create(nodeOf("a", "core")).code == agent::kSuccess ? 0 : 1;
    _exit(wrong);
  });
  ASSERT_TRUE(WIFEXITED(status));
  EXPECT_EQ(0, WEXITSTATUS(status));
  restart();
  EXPECT_EQ("a", ids().back());
}

// --- Moving and changing.

TEST_F(NodeServiceTest, MovesANodeWithEverythingBelowIt) {
  expectDone(nodes().move("west", "third", NodeService::kTypeOfParent));
  const auto events = host_->takeEvents();
  ASSERT_EQ(1U, events.size());
  EXPECT_EQ((NodeEvent{EVENT_TOPO_NODE_CHANGED, {"west"}}), withIds(events[0]));
  EXPECT_EQ("third", events[0].nodes[0].parentId);
  restart();
  EXPECT_EQ("third", model().topoNode("west")->parentId);
  EXPECT_EQ(6U, remove("east"));
}

TEST_F(NodeServiceTest, TakesTheTypeOfTheNewParent) {
  expectDone(nodes().move("NE=3", "NE=1", NodeService::kTypeOfParent));
  EXPECT_EQ(1U, model().topoNode("NE=3")->parentType);
  expectDone(nodes().move("NE=3", "", NodeService::kTypeOfParent));
  EXPECT_EQ(2U, model().topoNode("NE=3")->parentType);
  EXPECT_EQ((NodeEvents{{EVENT_TOPO_NODE_CHANGED, {"NE=3"}}, {EVENT_TOPO_NODE_CHANGED, {"NE=3"}}}),
            host_->events());
  expectRefused(agent::kInvalidName,
                "the parent of node \"NE=3\", node \"core\", is a subnetwork, not an element",
                [&] { return nodes().move("NE=3", "core", kTopoElement); });
}

// The order of siblings is the order of the list, before and after a restart.
TEST_F(NodeServiceTest, PutsAMovedNodeBetweenItsSiblings) {
  expectDone(nodes().create(nodeOf("last", "west")));
  expectDone(nodes().move("NE=2", "west", NodeService::kTypeOfParent));
  expectDone(nodes().move("east", "west", NodeService::kTypeOfParent));
  expectDone(nodes().move("NE=1", "core", NodeService::kTypeOfParent));
  expectDone(nodes().move("NE=1", "west", NodeService::kTypeOfParent));
  host_->events();
  ChangingHost copy(agent::SqliteStore::kInMemory, host_->store().read());
  std::size_t removed = 0;
  remove("core");
  EXPECT_EQ(agent::kSuccess, copy.nodes().remove("core", removed).code);
  const NodeEvents expected = {
      {EVENT_TOPO_NODE_DELETED, {"NE=1", "third", "east", "NE=2", "NE=3", "last", "west", "core"}}};
  EXPECT_EQ(expected, copy.events());
  EXPECT_EQ(expected, host_->events());
}

TEST_F(NodeServiceTest, RejectsAMoveThatMakesACycle) {
  const auto move = [this](const std::string& id, const std::string& parent) {
    return [=] { return nodes().move(id, parent, NodeService::kTypeOfParent); };
  };
  expectRefused(agent::kInvalidName,
                "node \"NE=1\" cannot be the parent of node \"core\", which is above it",
                move("core", "NE=1"));
  expectRefused(agent::kInvalidName, "node \"core\" cannot be its own parent",
                move("core", "core"));
  expectRefused(agent::kEntityNotFound, "no node \"x\" to be the parent of node \"core\"",
                move("core", "x"));
  expectRefused(agent::kEntityNotFound, "no node \"x\"", move("x", "core"));
  expectRefused(agent::kInvalidName, "the parent of node \"core\" is not UTF-8 at byte 0",
                move("core", "\xff"));
}

TEST_F(NodeServiceTest, ChangesParamsAndAttributes) {
  agent::NodeFields fields;
  fields.params = {-1, 2};
  expectDone(nodes().change("west", fields));
  fields.params.reset();
  fields.attributes = Pairs{{"location", "Hall||2"}, {"location", ""}};
  expectDone(nodes().change("west", fields));
  EXPECT_EQ((NodeEvents{{EVENT_TOPO_NODE_CHANGED, {"west"}}, {EVENT_TOPO_NODE_CHANGED, {"west"}}}),
            host_->events());
  restart();
  const TopoNode_T west = *model().topoNode("west");
  EXPECT_EQ(-1, west.attribute3);
  EXPECT_EQ(2, west.attribute4);
  EXPECT_EQ(*fields.attributes, west.extendedAttributes);
  fields.attributes->clear();
  expectDone(nodes().change("west", fields));
  EXPECT_TRUE(model().topoNode("west")->extendedAttributes.empty());
}

TEST_F(NodeServiceTest, ChangesEachOfTheParams) {
  agent::NodeFields fields;
  for (const auto& params : {std::make_pair(1, 0), std::make_pair(1, 2)}) {
    fields.params = params;
    expectDone(nodes().change("west", fields));
    EXPECT_EQ((NodeEvents{{EVENT_TOPO_NODE_CHANGED, {"west"}}}), host_->events());
  }
  EXPECT_EQ(1, model().topoNode("west")->attribute3);
  EXPECT_EQ(2, model().topoNode("west")->attribute4);
}

TEST_F(NodeServiceTest, RaisesNoEventForAChangeThatChangesNothing) {
  expectDone(nodes().move("west", "core", NodeService::kTypeOfParent));
  expectDone(nodes().change("west", {}));
  expectDone(nodes().change("west", {std::make_pair(0, 0), agent::NodeFields().attributes}));
  EXPECT_EQ(NodeEvents(), host_->events());
}

TEST_F(NodeServiceTest, RejectsFieldsThatCannotBeStored) {
  agent::NodeFields fields;
  fields.attributes = Pairs{{"key", "\xff"}, {"next", "valid"}};
  expectRefused(agent::kInvalidName, "an attribute of node \"west\" is not UTF-8 at byte 0",
                [&] { return nodes().change("west", fields); });
  expectRefused(agent::kEntityNotFound, "no node \"x\"", [&] { return nodes().change("x", {}); });
}

}  // namespace
