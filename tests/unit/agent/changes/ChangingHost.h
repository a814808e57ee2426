// A store, a model, the services that change both, and the raised events.

#ifndef TESTS_UNIT_AGENT_CHANGES_CHANGINGHOST_H
#define TESTS_UNIT_AGENT_CHANGES_CHANGINGHOST_H

#include <gtest/gtest.h>

#include <cstdint>
#include <mutex>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "agent/changes/AttributeService.h"
#include "agent/changes/NodeService.h"
#include "agent/store/sqlite/SqliteStore.h"
#include "platform/event/EventMgr.h"
#include "tests/unit/agent/support/NetworkFiles.h"

struct RaisedEvent {
  std::uint64_t change;
  int id;
  std::vector<NS_DOMAIN::TopoNode_T> nodes;
};

// An event with the ids of its nodes, for expectations.
struct NodeEvent {
  int id;
  std::vector<std::string> nodes;
};

inline bool operator==(const NodeEvent& left, const NodeEvent& right) {
  return left.id == right.id && left.nodes == right.nodes;
}

inline void PrintTo(const NodeEvent& event, std::ostream* out) {
  *out << event.id << testing::PrintToString(event.nodes);
}

using NodeEvents = std::vector<NodeEvent>;

inline NodeEvent withIds(const RaisedEvent& event) {
  NodeEvent result{event.id, {}};
  for (const auto& node : event.nodes) {
    result.nodes.push_back(node.nodeId);
  }
  return result;
}

// The network in a model as readers see the network, without labels.
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
    network.networkElements.push_back({element.number, element.name, isShown,
                                       model.networkElement(element.number)->shownForNode});
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

// A second ChangingHost on the same path simulates a restart.
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

  // As takeEvents(), with the ids of the nodes only.
  NodeEvents events() {
    NodeEvents result;
    for (const RaisedEvent& event : takeEvents()) {
      result.push_back(withIds(event));
    }
    return result;
  }

  // The network as readers of the model see the network, without labels.
  agent::Network seen() const { return networkOf(model_); }

  // The stored network, without labels.
  agent::Network stored() {
    agent::Network network = store_.read();
    network.objectLabels.clear();
    return network;
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

#endif
