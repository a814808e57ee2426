// Imports of networks into the served network.

#include <gtest/gtest.h>

#include <optional>
#include <stdexcept>
#include <utility>

#include "agent/base/FailureCodes.h"
#include "agent/changes/NodeService.h"
#include "agent/formats/NetworkReader.h"
#include "tests/support/Pairs.h"
#include "tests/unit/agent/changes/ChangingHost.h"

namespace {

using agent::ImportSummary;
using agent::Network;
using agent::Outcome;

Network partOf(const std::string& name, const std::string& content) {
  auto read = agent::readNetwork(name, content);
  return read.ok() ? std::move(read.value().network)
                   : throw std::runtime_error(read.outcome().reason);
}

Network part(const std::string& fields) {
  return partOf("part.json", withFormat(fields));
}

// The reason why the reader rejects content of an import; empty for valid content.
std::string refusalOfPart(const std::string& content, const std::string& name = "part.json") {
  return agent::readNetwork(name, content).outcome().reason;
}

Network baseNetwork() {
  return readText(withFormat(R"(
    "ems": "E",
    "topoNodes": [{"id": "core", "name": "Core"}, {"id": "NE=1", "parent": "core", "type": 1}],
    "networkElements": [{"number": 1, "shown": true}, {"number": 2, "name": "Two"}],
    "clockPositions": [{"reference": "NE=1"}],
    "clockLinks": [{"id": "k"}],
    "objectLabels": [{"type": 201, "id": "k", "label": "Trunk"}, {"type": 201, "id": "none"}])"));
}

class NetworkImport : public testing::Test {
 protected:
  Outcome import(Network network) { return host_.nodes().import(std::move(network), summary_); }

  void expectImported(Network network) {
    const Outcome outcome = import(std::move(network));
    EXPECT_EQ(agent::kSuccess, outcome.code) << outcome.reason;
    EXPECT_EQ(host_.stored(), host_.seen());
  }

  void expectRefused(std::uint32_t code, const std::string& reason, Network network) {
    const agent::Network before = host_.store().read();
    summary_.topoNodes = 77;
    const Outcome outcome = import(std::move(network));
    EXPECT_EQ(code, outcome.code);
    EXPECT_EQ(reason, outcome.reason);
    EXPECT_EQ(0U, summary_.topoNodes);
    EXPECT_EQ(before, host_.store().read());
    EXPECT_EQ(host_.stored(), host_.seen());
    EXPECT_EQ(NodeEvents(), host_.events());
  }

  ChangingHost host_{agent::SqliteStore::kInMemory, baseNetwork()};
  ImportSummary summary_;
};

TEST_F(NetworkImport, AppendsEveryList) {
  expectImported(part(R"(
    "ems": "other",
    "topoNodes": [
      {"id": "NE=9", "parent": "new", "type": 1, "params": [1, 2], "attributes": [["k", "v"]]},
      {"id": "new", "parent": "core", "name": "New"},
      {"id": "kind", "parent": "NE=1", "type": 9}],
    "networkElements": [{"number": 9, "name": "Nine", "shown": true}, {"number": -4}],
    "clockPositions": [{"reference": "NE=9", "label": "nine", "values": [3, 4]}],
    "clockLinks": [{"id": "l", "name": "SDH/l", "a": "NE=1", "z": "NE=9"}],
    "objectLabels": [{"type": 201, "id": "l", "label": "Branch"}])"));
  Network expected;
  expected.ems = "E";
  expected.topoNodes = {nodeOf("core", "", 2, "Core"), nodeOf("NE=1", "core", 1),
                        nodeOf("NE=9", "new", 1), nodeOf("new", "core", 2, "New"),
                        nodeOf("kind", "NE=1", 9)};
  expected.topoNodes[2].attribute3 = 1;
  expected.topoNodes[2].attribute4 = 2;
  expected.topoNodes[2].extendedAttributes = {{"k", "v"}};
  expected.networkElements = {{1, "", true}, {2, "Two"}, {9, "Nine", true}, {-4, ""}};
  expected.clockPositions = {positionOf("NE=1"), positionOf("NE=9", "nine", 3, 4)};
  expected.clockLinks = {linkOf("k"), linkOf("l", "SDH/l", "NE=1", "NE=9")};
  EXPECT_EQ(expected, host_.seen());
  EXPECT_EQ("Branch", host_.model().labelOf(201, "l"));
  EXPECT_EQ((NodeEvents{{EVENT_TOPO_NODE_CREATED, {"NE=9", "new", "kind"}}}), host_.events());
  EXPECT_EQ(3U, summary_.topoNodes);
  EXPECT_EQ(2U, summary_.networkElements);
  EXPECT_EQ(1U, summary_.clockPositions);
  EXPECT_EQ(1U, summary_.clockLinks);
  EXPECT_EQ(1U, summary_.objectLabels);
}

TEST_F(NetworkImport, RaisesNoEventForANetworkWithoutNodes) {
  expectImported(part(R"("networkElements": [{"number": 3}])"));
  expectImported(Network());
  EXPECT_EQ(NodeEvents(), host_.events());
  EXPECT_EQ(0U, summary_.networkElements);
}

TEST_F(NetworkImport, MakesEveryNewObjectNameable) {
  expectImported(part(R"("topoNodes": [{"id": "x"}, {"id": "OS=4", "parent": "x", "type": 1}],
                         "clockPositions": [{"reference": "NE=30"}], "clockLinks": [{"id": "l"}])"));
  for (const agent::ObjectKey& key :
       {agent::ObjectKey{54, "x"}, {3, "OS=4"}, {1, "NE=30"}, {201, "l"}}) {
    EXPECT_TRUE(host_.model().hasObject(key)) << key.id;
  }
}

TEST_F(NetworkImport, RejectsUnknownParents) {
  expectRefused(agent::kEntityNotFound, "topoNodes[1].parent: \"nowhere\" does not exist",
                part(R"("topoNodes": [{"id": "x"}, {"id": "y", "parent": "nowhere"}])"));
}

TEST_F(NetworkImport, RejectsDuplicatesOfServedRecords) {
  const auto expectClash = [this](const std::string& reason, const std::string& fields) {
    expectRefused(agent::kAlreadyExists, reason + " exists already", part(fields));
  };
  expectClash("topoNodes[1]: node \"core\"", R"("topoNodes": [{"id": "x"}, {"id": "core"}])");
  expectClash("networkElements[0]: network element 2", R"("networkElements": [{"number": 2}])");
  expectClash("clockPositions[0]: clock position \"NE=1\"",
              R"("clockPositions": [{"reference": "NE=1"}])");
  expectClash("clockLinks[0]: clock link \"k\"", R"("topoNodes": [{"id": "x"}],
              "clockLinks": [{"id": "k"}])");
  expectClash("objectLabels[0]: a label of the object 201 \"k\"",
              R"("objectLabels": [{"type": 201, "id": "k", "label": "x"}])");
  expectClash("objectLabels[0]: a label of the object 201 \"none\"",
              R"("objectLabels": [{"type": 201, "id": "none", "label": "x"}])");
}

TEST_F(NetworkImport, RejectsASecondNodeOfAnElement) {
  expectRefused(
      agent::kAlreadyExists,
      "topoNodes[1].id: \"EQ=2,NE=1\" is shown as ManagedElement=1, as node \"NE=1\" is",
      part(R"("topoNodes": [{"id": "ONE=1", "type": 1}, {"id": "EQ=2,NE=1", "type": 1}])"));
  Network twice;
  twice.topoNodes = {nodeOf("NE=7", "", NS_DOMAIN::kTopoElement),
                     nodeOf("7", "", NS_DOMAIN::kTopoElement)};
  expectRefused(agent::kInvalidName,
                "topoNodes[1].id: \"7\" is shown as ManagedElement=7, as topoNodes[0] is", twice);
  twice.topoNodes = {nodeOf("x", "", NS_DOMAIN::kTopoElement)};
  expectRefused(agent::kInvalidName,
                "topoNodes[0].id: \"x\" has no number, which the id of an element needs", twice);
}

TEST_F(NetworkImport, RejectsNetworksThatAFileCannotContain) {
  Network twice;
  twice.topoNodes = {nodeOf("x", ""), nodeOf("x", "")};
  expectRefused(agent::kInvalidName, "topoNodes[1].id: \"x\" is already that of topoNodes[0]",
                twice);
  Network cycle;
  cycle.topoNodes = {nodeOf("x", "y"), nodeOf("y", "x")};
  expectRefused(agent::kInvalidName, "topoNodes[0].parent: makes the node its own ancestor", cycle);
  Network nameless;
  nameless.topoNodes = {nodeOf("", "core")};
  expectRefused(agent::kInvalidName, "topoNodes[0].id: must not be empty", nameless);
  Network broken;
  broken.clockLinks.resize(2);
  broken.clockLinks[1].linkId = "x";
  broken.clockLinks[1].zEndReference = "\xff";
  expectRefused(agent::kInvalidName, "clockLinks[1].z: is not UTF-8 at byte 0", broken);
  Network large;
  large.networkElements.push_back({4, longText('x')});
  expectRefused(agent::kInvalidName, "networkElements[0].name: has more than 1048576 bytes", large);
  Network nul;
  nul.ems = std::string("\0", 1);
  expectRefused(agent::kInvalidName, "ems: contains a NUL character", nul);
  Network position;
  position.clockPositions.resize(1);
  position.clockPositions[0].label = "\xff";
  expectRefused(agent::kInvalidName, "clockPositions[0].label: is not UTF-8 at byte 0", position);
  Network label;
  label.objectLabels.push_back({1, "x", "\xff"});
  expectRefused(agent::kInvalidName, "objectLabels[0].label: is not UTF-8 at byte 0", label);
}

TEST_F(NetworkImport, RejectsTextsThatAFileCannotContain) {
  const auto refuse = [this](const std::string& place, auto spoil) {
    Network network;
    network.topoNodes = {nodeOf("x", "core")};
    network.topoNodes[0].extendedAttributes = {{"key", "value"}};
    network.networkElements.push_back({4, "four"});
    network.clockPositions.resize(1);
    network.clockPositions[0].reference = "NE=7";
    network.clockLinks.resize(1);
    network.clockLinks[0].linkId = "l";
    network.objectLabels.push_back({1, "x", "label"});
    spoil(network);
    expectRefused(agent::kInvalidName, place + ": is not UTF-8 at byte 0", network);
  };
  const std::string bad = "\xff";
  refuse("topoNodes[0].id", [&](Network& network) { network.topoNodes[0].nodeId = bad; });
  refuse("topoNodes[0].parent", [&](Network& network) { network.topoNodes[0].parentId = bad; });
  refuse("topoNodes[0].name", [&](Network& network) { network.topoNodes[0].nativeName = bad; });
  refuse("topoNodes[0].attributes",
         [&](Network& network) { network.topoNodes[0].extendedAttributes[0].first = bad; });
  refuse("topoNodes[0].attributes",
         [&](Network& network) { network.topoNodes[0].extendedAttributes[0].second = bad; });
  refuse("networkElements[0].name",
         [&](Network& network) { network.networkElements[0].name = bad; });
  refuse("clockPositions[0].reference",
         [&](Network& network) { network.clockPositions[0].reference = bad; });
  refuse("clockPositions[0].label",
         [&](Network& network) { network.clockPositions[0].label = bad; });
  refuse("clockLinks[0].id", [&](Network& network) { network.clockLinks[0].linkId = bad; });
  refuse("clockLinks[0].name", [&](Network& network) { network.clockLinks[0].nativeName = bad; });
  refuse("clockLinks[0].a", [&](Network& network) { network.clockLinks[0].aEndReference = bad; });
  refuse("clockLinks[0].z", [&](Network& network) { network.clockLinks[0].zEndReference = bad; });
  refuse("objectLabels[0].id", [&](Network& network) { network.objectLabels[0].id = bad; });
  refuse("objectLabels[0].label", [&](Network& network) { network.objectLabels[0].label = bad; });
}

TEST_F(NetworkImport, ClearsFieldsThatAFileCannotSet) {
  Network network;
  network.topoNodes = {nodeOf("x", "")};
  network.topoNodes[0].text5 = "carried";
  network.clockPositions.resize(1);
  network.clockPositions[0].reference = "NE=7";
  network.clockPositions[0].text4 = "carried";
  network.clockLinks.resize(1);
  network.clockLinks[0].linkId = "l";
  network.clockLinks[0].scalar8 = 8;
  expectImported(network);
  const Network seen = networkOf(host_.model());
  EXPECT_EQ("", seen.topoNodes.back().text5);
  EXPECT_EQ("", seen.clockPositions.back().text4);
  EXPECT_EQ(0, seen.clockLinks.back().scalar8);
}

TEST_F(NetworkImport, NeverShowsAnElementTwice) {
  expectImported(part(R"("topoNodes": [{"id": "NE=2", "type": 1}, {"id": "NE=3", "type": 1}],
                         "networkElements": [{"number": 3}, {"number": 4}])"));
  expectImported(part(R"("topoNodes": [{"id": "NE=5", "type": 1}])"));
  expectImported(part(R"("networkElements": [{"number": 5}])"));
  std::vector<NS_DOMAIN::NEIndex> shown;
  host_.model().appendNEIndexes(shown, true);
  std::vector<std::int32_t> numbers;
  for (const auto& index : shown) {
    numbers.push_back(index.number);
  }
  EXPECT_EQ((std::vector<std::int32_t>{1, 2, 3, 5}), numbers);
}

TEST_F(NetworkImport, StoresTheManagingSystemOnlyIfNoneIsStored) {
  expectImported(part(R"("ems": "other")"));
  EXPECT_EQ("E", host_.model().ems());
  ChangingHost empty(agent::SqliteStore::kInMemory);
  EXPECT_EQ(agent::kSuccess, empty.nodes().import(part(R"("ems": "first")"), summary_).code);
  EXPECT_EQ(agent::kSuccess, empty.nodes().import(part(R"("ems": "second")"), summary_).code);
  EXPECT_EQ("first", empty.model().ems());
  EXPECT_EQ("first", empty.store().read().ems);
  EXPECT_FALSE(empty.store().isNew());
}

TEST_F(NetworkImport, AddsAWholeGraphmlNetwork) {
  const std::string graph = R"(<graphml><graph><node id="a"/><node id="b"/>
                               <edge source="a" target="b"/></graph></graphml>)";
  ChangingHost empty(agent::SqliteStore::kInMemory);
  const Outcome outcome = empty.nodes().import(partOf("dir/zoo.graphml", graph), summary_);
  EXPECT_EQ(agent::kSuccess, outcome.code) << outcome.reason;
  EXPECT_EQ((NodeEvents{{EVENT_TOPO_NODE_CREATED, {"zoo", "NE=1", "NE=2"}}}), empty.events());
  EXPECT_EQ(1U, summary_.clockLinks);
  expectRefused(agent::kAlreadyExists, "topoNodes[1]: node \"NE=1\" exists already",
                partOf("zoo.graphml", graph));
}

TEST_F(NetworkImport, AddsALargeNetworkToALargeNetwork) {
  ChangingHost large(agent::SqliteStore::kInMemory, wideNetwork(50000));
  Network more;
  for (int i = 0; i < 50000; ++i) {
    more.topoNodes.push_back(nodeOf("more " + std::to_string(i), "node " + std::to_string(i)));
  }
  EXPECT_EQ(agent::kSuccess, large.nodes().import(std::move(more), summary_).code);
  EXPECT_EQ(100000U, large.model().topoNodeCount());
  std::size_t removed = 0;
  EXPECT_EQ(agent::kSuccess, large.nodes().remove("node 49999", removed).code);
  EXPECT_EQ(2U, removed);
}

// --- Dry runs, places, replacing.

TEST_F(NetworkImport, ChangesNothingInADryRun) {
  const Network before = host_.store().read();
  agent::ImportOptions options;
  options.dryRun = true;
  for (const bool replace : {false, true}) {
    options.replace = replace;
    const Outcome outcome = host_.nodes().import(
        part(R"("topoNodes": [{"id": "x"}], "clockLinks": [{"id": "l"}])"), summary_, options);
    EXPECT_EQ(agent::kSuccess, outcome.code) << outcome.reason;
    EXPECT_EQ(1U, summary_.topoNodes);
    EXPECT_EQ(1U, summary_.clockLinks);
  }
  options.replace = false;
  EXPECT_EQ(agent::kAlreadyExists,
            host_.nodes().import(part(R"("topoNodes": [{"id": "core"}])"), summary_, options).code);
  EXPECT_EQ(0U, summary_.topoNodes);
  EXPECT_EQ(before, host_.store().read());
  EXPECT_EQ(host_.stored(), host_.seen());
  EXPECT_EQ(NodeEvents(), host_.events());
}

TEST_F(NetworkImport, NamesThePlacesOfAGraph) {
  const std::string graph = R"(<graphml><key attr.name="Country" for="node" id="c"/>
      <key attr.name="label" for="graph" id="l"/><graph><data key="l">core</data>
      <node id="a"/><node id="b"><data key="c">X</data></node>
      <edge source="a" target="b"/></graph></graphml>)";
  const auto reasonIn = [&](const std::string& fields) {
    ChangingHost host(agent::SqliteStore::kInMemory, readText(withFormat(fields)));
    auto read = agent::readNetwork("zoo.graphml", graph);
    agent::ImportOptions options;
    options.places = std::move(read.value().places);
    return host.nodes().import(std::move(read.value().network), summary_, options).reason;
  };
  EXPECT_EQ("", reasonIn(R"("ems": "E")"));
  EXPECT_EQ("graph.label: node \"core\" exists already",
            reasonIn(R"("topoNodes": [{"id": "core"}])"));
  EXPECT_EQ("node[1].Country: node \"core/X\" exists already",
            reasonIn(R"("topoNodes": [{"id": "core/X"}])"));
  EXPECT_EQ("node[1]: \"NE=2\" is shown as ManagedElement=2, as node \"2\" is",
            reasonIn(R"("topoNodes": [{"id": "2", "type": 1}])"));
  EXPECT_EQ("node[1]: network element 2 exists already",
            reasonIn(R"("networkElements": [{"number": 2}])"));
  EXPECT_EQ("node[0]: clock position \"NE=1\" exists already",
            reasonIn(R"("clockPositions": [{"reference": "NE=1"}])"));
  EXPECT_EQ("edge[0]: clock link \"e0\" exists already",
            reasonIn(R"("clockLinks": [{"id": "e0"}])"));
}

TEST_F(NetworkImport, FitsSeveralGraphsIntoOneNetwork) {
  const std::string graph = R"(<graphml><graph><node id="a"/><node id="b"/>
                               <edge source="a" target="b"/></graph></graphml>)";
  ChangingHost empty(agent::SqliteStore::kInMemory);
  EXPECT_EQ(agent::kSuccess, empty.nodes().import(partOf("one.graphml", graph), summary_).code);
  auto two = agent::readNetwork("two.graphml", graph, agent::GraphmlNumbering{3});
  const Outcome outcome = empty.nodes().import(std::move(two.value().network), summary_);
  EXPECT_EQ(agent::kSuccess, outcome.code) << outcome.reason;
  EXPECT_EQ((NodeEvents{{EVENT_TOPO_NODE_CREATED, {"one", "NE=1", "NE=2"}},
                        {EVENT_TOPO_NODE_CREATED, {"two", "NE=3", "NE=4"}}}),
            empty.events());
  EXPECT_EQ(linkOf("two/e0", "link/-", "NE=3", "NE=4"), empty.seen().clockLinks.back());
  auto last = agent::readNetwork("last.graphml", graph, agent::GraphmlNumbering{2147483647});
  EXPECT_EQ("last.graphml: node[1]: the number of its element would be above 2147483647",
            last.outcome().reason);
}

class NetworkReplacement : public NetworkImport {
 protected:
  void replaceBy(Network network) {
    agent::ImportOptions options;
    options.replace = true;
    const Outcome outcome = host_.nodes().import(std::move(network), summary_, options);
    EXPECT_EQ(agent::kSuccess, outcome.code) << outcome.reason;
    EXPECT_EQ(host_.stored(), host_.seen());
  }
};

TEST_F(NetworkReplacement, MakesTheNetworkEqualToTheFile) {
  Network network = part(R"(
    "ems": "other",
    "topoNodes": [{"id": "new", "parent": "core"}, {"id": "core", "name": "Kern"},
                  {"id": "NE=2", "parent": "new", "type": 1}],
    "networkElements": [{"number": 2, "name": "Zwei"}],
    "clockPositions": [{"reference": "NE=2"}],
    "clockLinks": [{"id": "l"}],
    "objectLabels": [{"type": 201, "id": "l", "label": "L"}])");
  replaceBy(network);
  network.ems = "E";
  EXPECT_EQ(network, host_.store().read());
  EXPECT_EQ((NodeEvents{{EVENT_TOPO_NODE_DELETED, {"NE=1"}},
                        {EVENT_TOPO_NODE_CREATED, {"new", "NE=2"}},
                        {EVENT_TOPO_NODE_CHANGED, {"core"}}}),
            host_.events());
  EXPECT_EQ("L", host_.model().labelOf(201, "l"));
  EXPECT_EQ("", host_.model().labelOf(201, "k"));
  EXPECT_FALSE(host_.model().hasObject({1, "NE=1"}));
  EXPECT_EQ(3U, summary_.topoNodes);
}

TEST_F(NetworkReplacement, RaisesTheEventsOfOneChange) {
  replaceBy(part(R"("topoNodes": [{"id": "core", "name": "Kern"}, {"id": "new"}])"));
  const auto events = host_.takeEvents();
  ASSERT_EQ(3U, events.size());
  EXPECT_EQ(events[0].change, events[2].change);
  replaceBy(part(R"("topoNodes": [{"id": "new"}, {"id": "core", "name": "Kern"}])"));
  EXPECT_EQ(NodeEvents(), host_.events());
  EXPECT_EQ("new", host_.seen().topoNodes.front().nodeId);
}

TEST_F(NetworkReplacement, DeletesBottomUpAndRecreatesANodeOfAnotherKind) {
  replaceBy(part(R"("topoNodes": [{"id": "NE=1"}])"));
  EXPECT_EQ((NodeEvents{{EVENT_TOPO_NODE_DELETED, {"NE=1", "core"}},
                        {EVENT_TOPO_NODE_CREATED, {"NE=1"}}}),
            host_.events());
  replaceBy(Network());
  EXPECT_EQ((NodeEvents{{EVENT_TOPO_NODE_DELETED, {"NE=1"}}}), host_.events());
  EXPECT_TRUE(host_.seen().topoNodes.empty());
  EXPECT_FALSE(host_.store().isNew());
}

TEST_F(NetworkReplacement, KeepsTheAttributesOfObjectsThatRemain) {
  const auto nameOfNode = [](const char* id) {
    return nameOf({{"EMS", "E"}, {"TopoSubnetwork", id}});
  };
  globaldefs::NVSList_T info = nameOf({{"Region", "north"}});
  EXPECT_TRUE(host_.nodes().create(nodeOf("gone", "")).ok());
  for (const char* id : {"core", "gone"}) {
    EXPECT_TRUE(host_.attributes().setOwner(nameOfNode(id), "me").ok());
    EXPECT_TRUE(host_.attributes().setUserLabel(nameOfNode(id), "label", false).ok());
    EXPECT_TRUE(host_.attributes().setAdditionalInfo(nameOfNode(id), info).ok());
  }
  replaceBy(part(R"("topoNodes": [{"id": "core"}])"));
  EXPECT_EQ("me", host_.store().ownerOf({54, "core"}));
  EXPECT_EQ(1U, host_.store().additionalInfoOf({54, "core"}).size());
  EXPECT_EQ("", host_.model().labelOf(54, "core"));
  EXPECT_EQ("", host_.store().ownerOf({54, "gone"}));
  EXPECT_TRUE(host_.store().additionalInfoOf({54, "gone"}).empty());
}

TEST_F(NetworkReplacement, RejectsAParentThatIsOnlyInTheOldNetwork) {
  agent::ImportOptions options;
  options.replace = true;
  const Network before = host_.store().read();
  const Outcome outcome = host_.nodes().import(
      part(R"("topoNodes": [{"id": "x", "parent": "core"}])"), summary_, options);
  EXPECT_EQ("topoNodes[0].parent: \"core\" does not exist", outcome.reason);
  EXPECT_EQ(before, host_.store().read());
}

// The model after a replacement works like the model of a restarted agent.
TEST_F(NetworkReplacement, LeavesAModelThatCanBeChanged) {
  replaceBy(part(R"("topoNodes": [{"id": "a"}, {"id": "NE=9", "parent": "a", "type": 1}])"));
  EXPECT_EQ(agent::kSuccess, host_.nodes().create(nodeOf("b", "a")).code);
  EXPECT_EQ(agent::kSuccess, host_.nodes().rename("NE=9", "Nine").code);
  std::size_t removed = 0;
  EXPECT_EQ(agent::kSuccess, host_.nodes().remove("a", removed).code);
  EXPECT_EQ(3U, removed);
  EXPECT_EQ(host_.stored(), host_.seen());
}

// --- Reading imported files.

TEST(PartReader, AcceptsParentsOutsideOfTheContent) {
  const std::string content = withFormat(R"("topoNodes": [{"id": "x", "parent": "elsewhere"}])");
  EXPECT_EQ("", refusalOfPart(content));
  EXPECT_EQ("network.json: topoNodes[0].parent: \"elsewhere\" does not exist", refusalOf(content));
}

TEST(PartReader, ChecksAllOtherRulesOfAFile) {
  EXPECT_EQ("part.json: topoNodes[1].id: \"x\" is already that of topoNodes[0]",
            refusalOfPart(withFormat(R"("topoNodes": [{"id": "x"}, {"id": "x"}])")));
  EXPECT_EQ("part.json: topoNodes[0].parent: makes the node its own ancestor",
            refusalOfPart(withFormat(R"("topoNodes": [{"id": "x", "parent": "x"}])")));
  EXPECT_EQ("part.json: file: is empty", refusalOfPart(" \n"));
  EXPECT_EQ("part.json: 1:2: is not UTF-8 here", refusalOfPart("{\xff"));
  EXPECT_EQ("a\\x0ab: format: is missing", refusalOfPart("{}", "a\nb"));
  EXPECT_EQ("", refusalOfPart("\xef\xbb\xbf" + withFormat(R"("ems": "E")")));
}

TEST(PartReader, AcceptsAnyName) {
  for (const std::string& name : {std::string(), std::string("/"), std::string("\xff\0x", 3)}) {
    EXPECT_EQ("", refusalOfPart(withFormat(R"("ems": "E")"), name));
  }
  EXPECT_NE("", refusalOfPart("<graphml><graph/></graphml>", ""));
  EXPECT_NE("", refusalOfPart("<graphml><graph/></graphml>", "\xff.xml"));
}

// --- Cancelling.

TEST(CancelledImport, StopsReading) {
  agent::Cancellation cancellation;
  cancellation.request();
  const std::vector<std::string> contents = {withFormat(R"("topoNodes": [{"id": "a"}])"),
                                             "<graphml><graph><node id='a'/></graph></graphml>",
                                             "<graphml><graph><edge/></graph></graphml>"};
  for (const std::string& content : contents) {
    const Outcome outcome =
        agent::readNetwork("net", content, std::nullopt, cancellation).outcome();
    EXPECT_EQ(agent::kInternalError, outcome.code) << content;
    EXPECT_EQ("cancelled, because the agent stops", outcome.reason) << content;
  }
}

TEST(CancelledImport, LeavesTheStoreUnchanged) {
  agent::Cancellation cancellation;
  agent::SqliteStore store(agent::SqliteStore::kInMemory);
  store.load(wideNetwork(3));
  cancellation.request();
  EXPECT_THROW(store.commit(agent::NetworkAddition{sampleNetwork(), {}}, cancellation),
               agent::Cancelled);
  EXPECT_EQ(wideNetwork(3), store.read());
  store.commit(agent::NetworkAddition{sampleNetwork(), {}});
}

// A store whose commit takes until the cancellation is requested.
class BusyStore final : public agent::NetworkStore {
 public:
  explicit BusyStore(agent::Cancellation& requested) : requested_(requested) {}

  void check() override {}
  bool isNew() override { return false; }
  void load(const Network&) override {}
  void read(const UsePiece&) override {}
  agent::NetworkSizes sizes() override { return {}; }
  std::uint64_t lastChange() override { return 0; }
  std::uint64_t commit(const agent::NetworkChange&, const agent::Cancellation& received) override {
    requested_.request();
    received.throwIfRequested();
    return 1;
  }
  std::vector<std::string> idsWithLabel(std::int32_t, const std::string&) override { return {}; }
  std::string ownerOf(const agent::ObjectKey&) override { return ""; }
  agent::InfoPairs additionalInfoOf(const agent::ObjectKey&) override { return {}; }
  std::vector<agent::ObjectAttributes> attributes() override { return {}; }
  std::uint64_t bytes() override { return 0; }
  std::unique_ptr<agent::StoreCopy> beginCopy() override { return nullptr; }

 private:
  agent::Cancellation& requested_;
};

TEST(CancelledImport, StopsWriting) {
  agent::Cancellation cancellation;
  BusyStore store(cancellation);
  agent::NetworkModel model;
  agent::NetworkWriter writer(store, model, nullptr);
  agent::NodeService nodes(writer, cancellation);
  agent::ImportSummary summary;
  EXPECT_EQ("the import: cancelled, because the agent stops",
            nodes.import(wideNetwork(3), summary).reason);
  EXPECT_EQ(0U, model.topoNodeCount());
}

TEST(CancelledImport, ChangesNothingAndLetsTheNextChangeProceed) {
  agent::Cancellation cancellation;
  agent::SqliteStore store(agent::SqliteStore::kInMemory);
  agent::NetworkModel model;
  std::size_t events = 0;
  agent::NetworkWriter writer(store, model, [&](std::uint64_t, int, auto) { ++events; });
  agent::NodeService nodes(writer, cancellation);
  cancellation.request();
  agent::ImportSummary summary;
  const agent::Outcome outcome = nodes.import(wideNetwork(3), summary);
  EXPECT_EQ(agent::kInternalError, outcome.code);
  EXPECT_EQ("the import: cancelled, because the agent stops", outcome.reason);
  EXPECT_EQ(0U, summary.topoNodes);
  EXPECT_TRUE(store.read().topoNodes.empty());
  EXPECT_EQ(0U, model.topoNodeCount());
  EXPECT_EQ(0U, events);
  EXPECT_EQ(agent::kSuccess, nodes.create(nodeOf("a", "")).code);
}

}  // namespace
