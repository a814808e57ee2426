// Store, model and the services that change them, with the events that they raise.

#ifndef TESTS_UNIT_AGENT_CHANGES_CHANGINGHOST_H
#define TESTS_UNIT_AGENT_CHANGES_CHANGINGHOST_H

#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "agent/changes/AttributeService.h"
#include "agent/changes/NodeService.h"
#include "agent/store/sqlite/SqliteStore.h"
#include "tests/unit/agent/support/NetworkFiles.h"

struct RaisedEvent {
  std::uint64_t change;
  int id;
  std::vector<NS_DOMAIN::TopoNode_T> nodes;
};

// Such as "372: a b".
inline std::string describe(const RaisedEvent& event) {
  std::string text = std::to_string(event.id) + ':';
  for (const auto& node : event.nodes) {
    text += ' ' + node.nodeId;
  }
  return text;
}

// What readers of a model see, without its labels.
inline agent::Network networkOf(const agent::NetworkModel& model) {
  agent::Network network;
  network.ems = model.ems();
  model.appendTopoNodes(network.topoNodes);
  std::vector<NS_DOMAIN::NEIndex> all;
  std::vector<NS_DOMAIN::NEIndex> shown;
  std::vector<NS_DOMAIN::NE_T> elements;
  model.appendNEIndexes(all, false);
  model.appendNEIndexes(shown, true);
  model.appendNEs(elements, all);
  std::size_t next = 0;
  for (const auto& element : elements) {
    const bool isShown = next < shown.size() && shown[next].number == element.number;
    next += isShown ? 1 : 0;
    network.networkElements.push_back({element.number, element.name, isShown});
  }
  network.clockPositions = model.clockPositions();
  network.clockLinks = model.clockLinks();
  return network;
}

// The network of a store, which is loaded with a network if it is new.
inline agent::Network networkIn(agent::NetworkStore& store, const agent::Network& network) {
  if (store.isNew()) {
    store.load(network);
  }
  return store.read();
}

// Opening one again on the same path is what a restart does.
class ChangingHost {
 public:
  ChangingHost(const std::string& path, const agent::Network& network)
      : store_(path), model_(networkIn(store_, network)) {}

  // A store without a network.
  explicit ChangingHost(const std::string& path) : store_(path), model_(store_.read()) {}

  agent::NetworkStore& store() { return store_; }
  agent::NetworkModel& model() { return model_; }
  agent::NetworkWriter& writer() { return writer_; }
  agent::NodeService& nodes() { return nodes_; }
  agent::AttributeService& attributes() { return attributes_; }

  // The events since the last call.
  std::vector<RaisedEvent> takeEvents() {
    const std::lock_guard<std::mutex> lock(mutex_);
    return std::exchange(events_, {});
  }

  // The same, one a line.
  std::string events() {
    std::string text;
    for (const RaisedEvent& event : takeEvents()) {
      text += describe(event) + '\n';
    }
    return text;
  }

  std::string seen() const { return describe(networkOf(model_)); }

  std::string stored() {
    agent::Network network = store_.read();
    network.objectLabels.clear();
    return describe(network);
  }

 private:
  agent::SqliteStore store_;
  agent::NetworkModel model_;
  std::mutex mutex_;
  std::vector<RaisedEvent> events_;
  agent::NetworkWriter writer_{
      store_, model_,
      [this](std::uint64_t change, int id, std::vector<NS_DOMAIN::TopoNode_T> nodes) {
        const std::lock_guard<std::mutex> lock(mutex_);
        events_.push_back({change, id, std::move(nodes)});
      }};
  agent::NodeService nodes_{writer_};
  agent::AttributeService attributes_{"E", writer_};
};

inline NS_DOMAIN::TopoNode_T nodeOf(const std::string& id, const std::string& parent,
                                    std::uint32_t type = NS_DOMAIN::kTopoSubnetwork,
                                    const std::string& name = "") {
  NS_DOMAIN::TopoNode_T node;
  node.nodeId = id;
  node.parentId = parent;
  node.nativeName = name;
  node.nodeType = type;
  node.parentType = NS_DOMAIN::kTopoSubnetwork;
  return node;
}

#endif
