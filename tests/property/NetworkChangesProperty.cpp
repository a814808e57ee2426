// Applies random changes to a network and to a plain list of nodes without indexes. Compares the
// model, the store before and after a restart, and the events with the list.

#include <SQLiteCpp/SQLiteCpp.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

#include "agent/base/FailureCodes.h"
#include "agent/changes/InventoryService.h"
#include "tests/property/Random.h"
#include "tests/support/Pairs.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/unit/agent/changes/ChangingHost.h"

namespace {

using agent::Network;
using agent::NetworkElement;
using NS_DOMAIN::TopoNode_T;

// The oracle: each function walks whole lists.
class Reference {
 public:
  explicit Reference(Network network) : network_(std::move(network)) {}

  const Network& network() const { return network_; }
  const NodeEvents& events() const { return events_; }

  bool has(const std::string& id) const {
    for (const TopoNode_T& node : network_.topoNodes) {
      if (node.nodeId == id) {
        return true;
      }
    }
    return false;
  }

  std::uint32_t create(const TopoNode_T& node) {
    if (node.parentId == node.nodeId && !agent::isRootMarker(node.parentId)) {
      return agent::kInvalidName;
    }
    if (has(node.nodeId) || showsAKnownElement(node)) {
      return agent::kAlreadyExists;
    }
    if (!agent::isRootMarker(node.parentId) && !has(node.parentId)) {
      return agent::kEntityNotFound;
    }
    network_.topoNodes.push_back(node);
    if (!agent::isRootMarker(node.parentId)) {
      network_.topoNodes.back().parentType = nodeAt(node.parentId).nodeType;
    }
    markShown();
    events_.push_back({EVENT_TOPO_NODE_CREATED, {node.nodeId}});
    return agent::kSuccess;
  }

  std::uint32_t remove(const std::string& id, std::size_t& removed) {
    removed = 0;
    if (!has(id)) {
      return agent::kEntityNotFound;
    }
    NodeEvent event{EVENT_TOPO_NODE_DELETED, {}};
    for (const TopoNode_T& node : below(id)) {
      event.nodes.push_back(node.nodeId);
      erase(node);
      ++removed;
    }
    events_.push_back(std::move(event));
    return agent::kSuccess;
  }

  std::uint32_t rename(const std::string& id, const std::string& name) {
    if (!has(id)) {
      return agent::kEntityNotFound;
    }
    const std::int32_t number = elementOf(nodeAt(id));
    NodeEvent event{EVENT_TOPO_NODE_CHANGED, {}};
    for (TopoNode_T& node : network_.topoNodes) {
      const bool isOne = node.nodeId == id || (number >= 0 && elementOf(node) == number);
      if (isOne && node.nativeName != name) {
        node.nativeName = name;
        event.nodes.push_back(node.nodeId);
      }
    }
    renameElement(number, name);
    addUnlessEmpty(std::move(event));
    return agent::kSuccess;
  }

  std::uint32_t import(const Network& more) {
    for (const TopoNode_T& node : more.topoNodes) {
      if (has(node.nodeId) || showsAKnownElement(node)) {
        return agent::kAlreadyExists;
      }
    }
    for (const NetworkElement& element : more.networkElements) {
      for (const NetworkElement& known : network_.networkElements) {
        if (element.number == known.number) {
          return agent::kAlreadyExists;
        }
      }
    }
    const Network before = network_;
    const auto append = [](auto& list, const auto& tail) {
      list.insert(list.end(), tail.begin(), tail.end());
    };
    append(network_.topoNodes, more.topoNodes);
    append(network_.networkElements, more.networkElements);
    for (const TopoNode_T& node : more.topoNodes) {
      if (!agent::isRootMarker(node.parentId) && !has(node.parentId)) {
        network_ = before;
        return agent::kEntityNotFound;
      }
    }
    markShown();
    NodeEvent event{EVENT_TOPO_NODE_CREATED, {}};
    for (const TopoNode_T& node : more.topoNodes) {
      event.nodes.push_back(node.nodeId);
    }
    addUnlessEmpty(std::move(event));
    return agent::kSuccess;
  }

  // Sets the user label of a subnetwork.
  std::uint32_t move(const std::string& id, const std::string& parent) {
    if (!has(id)) {
      return agent::kEntityNotFound;
    }
    const bool isRoot = agent::isRootMarker(parent);
    if (!isRoot && !has(parent)) {
      return agent::kEntityNotFound;
    }
    for (std::string at = parent; !agent::isRootMarker(at) && has(at); at = nodeAt(at).parentId) {
      if (at == id) {
        return agent::kInvalidName;
      }
    }
    TopoNode_T moved = nodeAt(id);
    moved.parentId = parent;
    moved.parentType = isRoot ? NS_DOMAIN::kTopoSubnetwork : nodeAt(parent).nodeType;
    if (!(moved == nodeAt(id))) {
      nodeAt(id) = moved;
      events_.push_back({EVENT_TOPO_NODE_CHANGED, {id}});
    }
    return agent::kSuccess;
  }

  std::uint32_t createElement(const NetworkElement& element) {
    if (hasElement(element.number)) {
      return agent::kAlreadyExists;
    }
    network_.networkElements.push_back(element);
    markShown();
    return agent::kSuccess;
  }

  std::uint32_t removeElement(std::int32_t number) {
    if (!hasElement(number)) {
      return agent::kEntityNotFound;
    }
    auto& elements = network_.networkElements;
    elements.erase(
        std::remove_if(elements.begin(), elements.end(),
                       [&](const NetworkElement& element) { return element.number == number; }),
        elements.end());
    return agent::kSuccess;
  }

  void replace(Network network) {
    Reference after(network);
    network.ems = network_.ems;
    NodeEvent deleted{EVENT_TOPO_NODE_DELETED, {}};
    for (const TopoNode_T& root : network_.topoNodes) {
      if (agent::isRootMarker(root.parentId)) {
        for (const TopoNode_T& node : below(root.nodeId)) {
          if (!after.hasOfType(node)) {
            deleted.nodes.push_back(node.nodeId);
          }
        }
      }
    }
    NodeEvent created{EVENT_TOPO_NODE_CREATED, {}};
    NodeEvent changed{EVENT_TOPO_NODE_CHANGED, {}};
    for (const TopoNode_T& node : network.topoNodes) {
      if (!hasOfType(node)) {
        created.nodes.push_back(node.nodeId);
      } else if (!(nodeAt(node.nodeId) == node)) {
        changed.nodes.push_back(node.nodeId);
      }
    }
    for (NodeEvent& event : std::vector<NodeEvent>{deleted, created, changed}) {
      if (!event.nodes.empty()) {
        events_.push_back(std::move(event));
      }
    }
    network_ = std::move(network);
  }

  std::uint32_t setLabel(const std::string& id, const std::string& label) {
    if (!has(id) || nodeAt(id).nodeType != NS_DOMAIN::kTopoSubnetwork) {
      return agent::kEntityNotFound;
    }
    eraseLabel(54, id);
    if (!label.empty()) {
      network_.objectLabels.push_back({54, id, label});
    }
    return agent::kSuccess;
  }

  std::string labelOf(const std::string& id) const {
    for (const agent::ObjectLabel& label : network_.objectLabels) {
      if (label.type == 54 && label.id == id) {
        return label.label;
      }
    }
    return {};
  }

  // The number of the managed element of a node with the id NE=N or EQ=1,NE=N; -1 for other nodes.
  static std::int32_t elementOf(const TopoNode_T& node) {
    const auto at = node.nodeId.rfind("NE=");
    const bool isElement = node.nodeType == NS_DOMAIN::kTopoElement && at != std::string::npos;
    return isElement ? std::stoi(node.nodeId.substr(at + 3)) : -1;
  }

 private:
  bool hasElement(std::int32_t number) const {
    return std::any_of(network_.networkElements.begin(), network_.networkElements.end(),
                       [&](const NetworkElement& element) { return element.number == number; });
  }

  bool hasOfType(const TopoNode_T& node) const {
    return std::any_of(network_.topoNodes.begin(), network_.topoNodes.end(),
                       [&](const TopoNode_T& other) {
                         return other.nodeId == node.nodeId && other.nodeType == node.nodeType;
                       });
  }

  bool showsAKnownElement(const TopoNode_T& node) const {
    return elementOf(node) >= 0 && hasNodeOf(elementOf(node));
  }

  TopoNode_T& nodeAt(const std::string& id) {
    return *std::find_if(network_.topoNodes.begin(), network_.topoNodes.end(),
                         [&](const TopoNode_T& node) { return node.nodeId == id; });
  }

  bool hasNodeOf(std::int32_t number) const {
    return std::any_of(network_.topoNodes.begin(), network_.topoNodes.end(),
                       [&](const TopoNode_T& node) { return elementOf(node) == number; });
  }

  // REQUIRES: each element of the first network that has a node is marked as shown.
  void markShown() {
    for (NetworkElement& element : network_.networkElements) {
      if (!element.shown && hasNodeOf(element.number)) {
        element.shown = element.shownForNode = true;
      }
    }
  }

  void renameElement(std::int32_t number, const std::string& name) {
    if (number < 0) {
      return;
    }
    for (NetworkElement& element : network_.networkElements) {
      element.name = element.number == number ? name : element.name;
    }
    for (auto& position : network_.clockPositions) {
      position.label = position.reference == "NE=" + std::to_string(number) ? name : position.label;
    }
  }

  std::vector<TopoNode_T> below(const std::string& id) {
    std::vector<TopoNode_T> nodes;
    if (!agent::isRootMarker(id)) {
      for (const TopoNode_T& node : network_.topoNodes) {
        if (node.parentId == id) {
          const auto more = below(node.nodeId);
          nodes.insert(nodes.end(), more.begin(), more.end());
        }
      }
    }
    nodes.push_back(nodeAt(id));
    return nodes;
  }

  void erase(const TopoNode_T& gone) {
    auto& nodes = network_.topoNodes;
    nodes.erase(std::find_if(nodes.begin(), nodes.end(),
                             [&](const TopoNode_T& node) { return node.nodeId == gone.nodeId; }));
    if (gone.nodeType == NS_DOMAIN::kTopoSubnetwork) {
      eraseLabel(54, gone.nodeId);
    }
    for (NetworkElement& element : network_.networkElements) {
      if (element.shownForNode && !hasNodeOf(element.number)) {
        element.shown = element.shownForNode = false;
      }
    }
  }

  void eraseLabel(std::int32_t type, const std::string& id) {
    auto& labels = network_.objectLabels;
    labels.erase(std::remove_if(labels.begin(), labels.end(),
                                [&](const agent::ObjectLabel& label) {
                                  return label.type == type && label.id == id;
                                }),
                 labels.end());
  }

  void addUnlessEmpty(NodeEvent event) {
    if (!event.nodes.empty()) {
      events_.push_back(std::move(event));
    }
  }

  Network network_;
  NodeEvents events_;
};

Network withoutLabels(Network network) {
  network.objectLabels.clear();
  return network;
}

// The host and the oracle. The set of ids is small, so that many changes concern the same nodes.
class World {
 public:
  World(Random& random, std::string path)
      : random_(random), path_(std::move(path)), reference_(firstNetwork()) {
    host_ = std::make_unique<ChangingHost>(path_, firstNetwork());
  }

  void change() {
    switch (random_.number(0, 12)) {
      case 0:
      case 1:
      case 2:
      case 3:
        return create();
      case 4:
        return remove();
      case 5:
        return rename();
      case 6:
        return import();
      case 7:
        return setLabel();
      case 8:
        return setNativeName();
      case 9:
      case 10:
        return move();
      case 11:
        return random_.number(0, 2) == 0 ? replace() : changeElements();
      default:
        return random_.number(0, 4) == 0 ? restart() : rename();
    }
  }

  void check() {
    const Network expected = withoutLabels(reference_.network());
    ASSERT_EQ(expected, host_->seen());
    ASSERT_EQ(expected, host_->stored());
    takeEvents();
    ASSERT_EQ(reference_.events(), events_);
    for (int i = 0; i < 12; ++i) {
      const std::string id = subnetworkId(i);
      ASSERT_EQ(reference_.labelOf(id), host_->model().labelOf(54, id));
    }
  }

  void takeEvents() {
    const NodeEvents events = host_->events();
    events_.insert(events_.end(), events.begin(), events.end());
  }

  void restart() {
    takeEvents();
    host_.reset();
    host_ = std::make_unique<ChangingHost>(path_, Network());
  }

  std::string damage() {
    host_.reset();
    SQLite::Database database(path_, SQLite::OPEN_READWRITE);
    return database.execAndGet("PRAGMA integrity_check").getString();
  }

 private:
  static Network firstNetwork() {
    Network network;
    network.ems = "E";
    network.topoNodes = {nodeOf("s0", ""), nodeOf("s1", "s0"),
                         nodeOf("NE=1", "s1", NS_DOMAIN::kTopoElement, "one"), nodeOf("0", ""),
                         nodeOf("EQ=1,NE=1", "s0", NS_DOMAIN::kTopoElement, "one again")};
    network.networkElements = {{1, "one", true}, {2, "two"}, {3, "three"}};
    network.clockPositions.resize(2);
    network.clockPositions[0].reference = "NE=1";
    network.clockPositions[1].reference = "NE=4";
    return network;
  }

  static std::string subnetworkId(int number) { return 's' + std::to_string(number); }

  std::string someId() {
    const std::string number = std::to_string(random_.number(1, 6));
    switch (random_.number(0, 5)) {
      case 0:
        return "NE=" + number;
      case 1:
        return "EQ=1,NE=" + number;
      case 2:
        return random_.number(0, 3) == 0 ? "0" : subnetworkId(0);
      default:
        return subnetworkId(random_.number(0, 11));
    }
  }

  std::string someName() { return random_.text("xy", 2); }

  TopoNode_T someNode() {
    const std::string id = someId();
    const bool isElement = id.find("NE=") != std::string::npos;
    TopoNode_T node = nodeOf(
        id, someId(), isElement ? NS_DOMAIN::kTopoElement : NS_DOMAIN::kTopoSubnetwork, someName());
    node.attribute3 = random_.number(-9, 9);
    if (random_.number(0, 2) == 0) {
      node.extendedAttributes = {{"location", someName()}, {"location", ""}};
    }
    return node;
  }

  void create() {
    TopoNode_T node = someNode();
    const std::uint32_t code = reference_.create(node);
    node.parentType = agent::NodeService::kTypeOfParent;
    ASSERT_EQ(code, host_->nodes().create(node).code) << node.nodeId << " below " << node.parentId;
  }

  void remove() {
    const std::string id = someId();
    std::size_t expected = 0;
    std::size_t removed = 0;
    const std::uint32_t code = reference_.remove(id, expected);
    ASSERT_EQ(code, host_->nodes().remove(id, removed).code) << id;
    ASSERT_EQ(expected, removed);
  }

  void rename() {
    const std::string id = someId();
    const std::string name = someName();
    const std::uint32_t code = reference_.rename(id, name);
    ASSERT_EQ(code, host_->nodes().rename(id, name).code) << id;
  }

  // Imports nodes in random order with parents in the import or in the network. The import has
  // neither duplicate ids nor duplicate elements nor cycles.
  void import() {
    Network more;
    more.ems = "other";
    for (int left = random_.number(0, 4); left > 0; --left) {
      TopoNode_T node = someNode();
      const bool isTwice =
          std::any_of(more.topoNodes.begin(), more.topoNodes.end(), [&](const TopoNode_T& other) {
            return other.nodeId == node.nodeId || other.parentId == node.nodeId ||
                   (Reference::elementOf(node) >= 0 &&
                    Reference::elementOf(other) == Reference::elementOf(node));
          });
      if (!isTwice && node.parentId != node.nodeId) {
        const bool isFirst = random_.number(0, 1) == 0;
        more.topoNodes.insert(isFirst ? more.topoNodes.begin() : more.topoNodes.end(), node);
      }
    }
    if (random_.number(0, 1) == 0) {
      more.networkElements.push_back({random_.number(1, 8), someName(), random_.number(0, 1) == 0});
    }
    agent::ImportSummary summary;
    const std::uint32_t code = reference_.import(more);
    ASSERT_EQ(code, host_->nodes().import(more, summary).code);
    ASSERT_EQ(code == agent::kSuccess ? more.topoNodes.size() : 0, summary.topoNodes);
  }

  void move() {
    const std::string id = someId();
    const std::string parent = random_.number(0, 5) == 0 ? "" : someId();
    const std::uint32_t code = reference_.move(id, parent);
    ASSERT_EQ(code, host_->nodes().move(id, parent, agent::NodeService::kTypeOfParent).code)
        << id << " below " << parent;
  }

  void changeElements() {
    agent::InventoryService service(host_->writer());
    const NetworkElement element = {random_.number(1, 8), someName(), random_.number(0, 1) == 0};
    const std::uint32_t removed = reference_.removeElement(element.number);
    ASSERT_EQ(removed, service.removeElement(element.number).code);
    if (random_.number(0, 1) == 0) {
      const std::uint32_t created = reference_.createElement(element);
      ASSERT_EQ(created, service.createElement(element).code);
    }
  }

  // The present network without some trees, with other names, a new node and no second node of an
  // element.
  void replace() {
    Reference rest(reference_.network());
    std::size_t removed = 0;
    rest.remove(someId(), removed);
    for (int number = 1; number <= 6; ++number) {
      if (rest.has("NE=" + std::to_string(number))) {
        rest.remove("EQ=1,NE=" + std::to_string(number), removed);
      }
    }
    rest.rename(someId(), someName());
    rest.create(someNode());
    Network network = rest.network();
    network.objectLabels.clear();
    for (NetworkElement& element : network.networkElements) {
      element.shownForNode = false;
    }
    network.ems = "other";
    reference_.replace(network);
    agent::ImportSummary summary;
    agent::ImportOptions options;
    options.replace = true;
    const auto outcome = host_->nodes().import(std::move(network), summary, options);
    ASSERT_EQ(agent::kSuccess, outcome.code) << outcome.reason;
  }

  void setLabel() {
    const std::string id = subnetworkId(random_.number(0, 11));
    const std::string label = someName();
    const auto name = nameOf({{"EMS", "E"}, {"TopoSubnetwork", id}});
    const std::uint32_t code = reference_.setLabel(id, label);
    ASSERT_EQ(code, host_->attributes().setUserLabel(name, label, false).code) << id;
  }

  void setNativeName() {
    const std::string id = subnetworkId(random_.number(0, 11));
    const std::string text = someName();
    const auto name = nameOf({{"EMS", "E"}, {"TopoSubnetwork", id}});
    const std::uint32_t code = reference_.rename(id, text);
    ASSERT_EQ(code, host_->attributes().setNativeName(name, text).code) << id;
  }

  Random& random_;
  const std::string path_;
  Reference reference_;
  std::unique_ptr<ChangingHost> host_;
  NodeEvents events_;
};

TEST(NetworkChangesProperty, EqualsAPlainListOfNodes) {
  Random random;
  const support::TemporaryDirectory directory;
  for (int round = 0; round < 8; ++round) {
    SCOPED_TRACE("round " + std::to_string(round) + " of seed " + std::to_string(random.seed()));
    World world(random, directory.file("store-" + std::to_string(round)));
    for (int step = 0; step < 150; ++step) {
      world.change();
      world.check();
      if (testing::Test::HasFatalFailure()) {
        return;
      }
    }
    world.restart();
    world.check();
    ASSERT_EQ("ok", world.damage());
  }
}

}  // namespace
