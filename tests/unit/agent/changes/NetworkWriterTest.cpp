// Serialised changes, the order of their events, and pauses.

#include "agent/changes/NetworkWriter.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <ostream>
#include <stdexcept>
#include <thread>

#include "agent/base/FailureCodes.h"
#include "tests/support/Pairs.h"
#include "tests/support/Task.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/unit/agent/changes/ChangingHost.h"

namespace {

using agent::NetworkModel;
using agent::NetworkWriter;
using agent::SqliteStore;
using namespace std::chrono_literals;

void joinAll(std::vector<std::thread>& threads) {
  for (std::thread& thread : threads) {
    thread.join();
  }
}

// Whether the node of an event exists when the event is raised.
struct StateAtEvent {
  int eventId;
  bool inModel;
  bool inStore;

  bool operator==(const StateAtEvent& other) const {
    return eventId == other.eventId && inModel == other.inModel && inStore == other.inStore;
  }
};

void PrintTo(const StateAtEvent& state, std::ostream* out) {
  *out << "event " << state.eventId << ", in the model: " << state.inModel
       << ", in the store: " << state.inStore;
}

TEST(NetworkWriter, RaisesAnEventAfterStoreAndModelHaveTheChange) {
  SqliteStore store(SqliteStore::kInMemory);
  NetworkModel model;
  std::vector<StateAtEvent> states;
  NetworkWriter writer(store, model, [&](std::uint64_t, int id, auto nodes) {
    states.push_back({id, model.hasTopoNode(nodes.at(0).nodeId), !store.read().topoNodes.empty()});
  });
  agent::NodeService nodes(writer);
  std::size_t removed = 0;
  EXPECT_TRUE(nodes.create(nodeOf("a", "")).ok());
  EXPECT_TRUE(nodes.rename("a", "A").ok());
  EXPECT_TRUE(nodes.remove("a", removed).ok());
  EXPECT_EQ((std::vector<StateAtEvent>{{EVENT_TOPO_NODE_CREATED, true, true},
                                       {EVENT_TOPO_NODE_CHANGED, true, true},
                                       {EVENT_TOPO_NODE_DELETED, false, false}}),
            states);
}

TEST(NetworkWriter, RaisesEachEventWithTheNumberOfItsChange) {
  ChangingHost host(SqliteStore::kInMemory);
  const std::uint64_t before = host.store().lastChange();
  EXPECT_TRUE(host.nodes().create(nodeOf("a", "")).ok());
  EXPECT_FALSE(host.nodes().create(nodeOf("a", "")).ok());  // gets no number
  EXPECT_TRUE(
      host.attributes().setOwner(nameOf({{"EMS", "E"}, {"TopoSubnetwork", "a"}}), "me").ok());
  EXPECT_TRUE(host.nodes().rename("a", "A").ok());
  const std::vector<RaisedEvent> events = host.takeEvents();
  ASSERT_EQ(2U, events.size());
  EXPECT_EQ(before + 1, events[0].change);
  EXPECT_EQ(before + 3, events[1].change);
}

TEST(NetworkWriter, WorksWithoutAListener) {
  SqliteStore store(SqliteStore::kInMemory);
  NetworkModel model;
  NetworkWriter writer(store, model);
  EXPECT_EQ(agent::kSuccess, agent::NodeService(writer).create(nodeOf("a", "")).code);
}

TEST(NetworkWriter, CommitsTheChangeIfTheListenerThrows) {
  SqliteStore store(SqliteStore::kInMemory);
  NetworkModel model;
  NetworkWriter writer(store, model,
                       [](std::uint64_t, int, auto) { throw std::runtime_error("no room"); });
  EXPECT_EQ(agent::kSuccess, agent::NodeService(writer).create(nodeOf("a", "")).code);
  EXPECT_TRUE(model.hasTopoNode("a"));
}

TEST(NetworkWriter, BlocksChangesDuringAPause) {
  ChangingHost host(SqliteStore::kInMemory);
  auto pause = std::make_unique<NetworkWriter::Pause>(host.writer(), 1min);
  support::Task change([&] { return host.nodes().create(nodeOf("a", "")).code; });
  EXPECT_TRUE(change.waits());
  EXPECT_FALSE(host.model().hasTopoNode("a"));  // readers do not wait
  EXPECT_EQ(NodeEvents(), host.events());
  pause.reset();
  EXPECT_EQ(agent::kSuccess, change.get());
  EXPECT_EQ((NodeEvents{{EVENT_TOPO_NODE_CREATED, {"a"}}}), host.events());
}

TEST(NetworkWriter, BlocksChangesUntilTheLastPauseEnds) {
  ChangingHost host(SqliteStore::kInMemory);
  auto first = std::make_unique<NetworkWriter::Pause>(host.writer(), 1min);
  auto second = std::make_unique<NetworkWriter::Pause>(host.writer(), 1min);
  support::Task change([&] { return host.nodes().create(nodeOf("a", "")).code; });
  EXPECT_TRUE(change.waits());
  first.reset();
  EXPECT_TRUE(change.waits());
  std::thread([&] { second.reset(); }).join();  // any thread may end one
  EXPECT_EQ(agent::kSuccess, change.get());
}

TEST(NetworkWriter, PausesOnlyWhenTheEventOfAChangeIsRaised) {
  SqliteStore store(SqliteStore::kInMemory);
  NetworkModel model;
  std::promise<void> raising;
  std::promise<void> proceed;
  std::atomic<bool> raised{false};
  NetworkWriter writer(store, model, [&](std::uint64_t, int, auto) {
    raising.set_value();
    proceed.get_future().wait();
    raised = true;
  });
  std::thread change([&] { EXPECT_TRUE(agent::NodeService(writer).create(nodeOf("a", "")).ok()); });
  raising.get_future().wait();
  support::Task pause([&] {
    const NetworkWriter::Pause paused(writer, 1min);
    return raised.load();
  });
  EXPECT_TRUE(pause.waits());
  proceed.set_value();
  EXPECT_TRUE(pause.get());
  change.join();
}

TEST(NetworkWriter, PausesDuringAChangeThatTakesTooLong) {
  ChangingHost host(SqliteStore::kInMemory);
  auto current = std::make_unique<NetworkWriter::Change>(host.writer());
  auto pause = std::make_unique<NetworkWriter::Pause>(host.writer(), 0ms);
  support::Task next([&] { return host.nodes().create(nodeOf("a", "")).code; });
  current->commit(current->model().prepareAddition(wideNetwork(1)));
  current.reset();
  EXPECT_TRUE(next.waits());
  EXPECT_EQ(1U, host.model().topoNodeCount());
  pause.reset();
  EXPECT_EQ(agent::kSuccess, next.get());
}

// Without precedence over waiting changes, a reload would starve while clients change the network.
// The order in which waiting threads wake up is random, so the test has several rounds.
TEST(NetworkWriter, PausesBeforeWaitingChanges) {
  for (int round = 0; round < 5; ++round) {
    ChangingHost host(SqliteStore::kInMemory);
    auto current = std::make_unique<NetworkWriter::Change>(host.writer());
    const auto create = [&host](const std::string& id) {
      return support::Task([&host, id] { return host.nodes().create(nodeOf(id, "")).code; });
    };
    auto a = create("a");
    auto b = create("b");
    auto c = create("c");
    EXPECT_TRUE(a.waits() && b.waits() && c.waits());
    support::Task pause([&host] {
      const NetworkWriter::Pause paused(host.writer(), 1min);
      return host.model().topoNodeCount();
    });
    EXPECT_TRUE(pause.waits());
    current.reset();
    EXPECT_EQ(0U, pause.get());
    EXPECT_EQ(agent::kSuccess, a.get() | b.get() | c.get());
  }
}

TEST(NetworkWriter, PausesUnderAStreamOfChanges) {
  ChangingHost host(SqliteStore::kInMemory);
  EXPECT_TRUE(host.nodes().create(nodeOf("a", "")).ok());
  std::atomic<bool> stop{false};
  const auto keepRenaming = [&](const std::string& name) {
    return support::Task([&, name] {
      for (int round = 0; !stop; ++round) {
        EXPECT_TRUE(host.nodes().rename("a", name + std::to_string(round)).ok());
      }
      return 0;
    });
  };
  auto first = keepRenaming("first");
  auto second = keepRenaming("second");
  for (int i = 0; i < 20; ++i) {
    const NetworkWriter::Pause pause(host.writer(), 1min);
    EXPECT_TRUE(first.waits() && second.waits());
    host.events();
    EXPECT_EQ(NodeEvents(), host.events());
  }
  stop = true;
}

// The last name in the model is the name in the last event, and every event has a different name.
TEST(NetworkWriter, RaisesEventsInTheOrderOfCommits) {
  const support::TemporaryDirectory directory;
  const std::string path = directory.file("store.db");
  std::string last;
  {
    ChangingHost host(path);
    EXPECT_TRUE(host.nodes().create(nodeOf("a", "")).ok());
    host.events();
    std::vector<std::thread> changers;
    for (int i = 0; i < 4; ++i) {
      changers.emplace_back([&, i] {
        for (int round = 0; round < 50; ++round) {
          EXPECT_TRUE(
              host.nodes().rename("a", std::to_string(i) + '.' + std::to_string(round)).ok());
        }
      });
    }
    joinAll(changers);
    const auto events = host.takeEvents();
    ASSERT_EQ(200U, events.size());
    last = events.back().nodes.at(0).nativeName;
    EXPECT_EQ(last, networkOf(host.model()).topoNodes.at(0).nativeName);
  }
  EXPECT_EQ(last, SqliteStore(path).read().topoNodes.at(0).nativeName);
}

// Makes one change of every kind around a new node, and removes the node. Returns the number of
// failures.
int changeEverything(ChangingHost& host, const std::string& own) {
  std::size_t removed = 0;
  agent::ImportSummary summary;
  agent::Network more;
  more.topoNodes = {nodeOf(own + ".x", own), nodeOf(own + ".y", own + ".x")};
  const auto name = nameOf({{"EMS", "E"}, {"TopoSubnetwork", own}});
  int wrong = 0;
  wrong += host.nodes().create(nodeOf(own, "node 1")).code != agent::kSuccess ? 1 : 0;
  wrong += host.nodes().import(more, summary).code != agent::kSuccess ? 1 : 0;
  wrong += host.attributes().setUserLabel(name, own, true).code != agent::kSuccess ? 1 : 0;
  wrong += host.nodes().rename("node 2", own).code != agent::kSuccess ? 1 : 0;
  wrong += host.nodes().remove(own, removed).code != agent::kSuccess ? 1 : 0;
  return wrong + (removed != 3 ? 1 : 0);
}

// Makes changes of every kind on several threads, while other threads read and pause.
TEST(NetworkWriter, KeepsStoreAndModelEqualUnderManyThreads) {
  const support::TemporaryDirectory directory;
  ChangingHost host(directory.file("store.db"), wideNetwork(50));
  std::atomic<bool> stop{false};
  std::atomic<int> wrong{0};
  std::vector<std::thread> readers;
  for (int i = 0; i < 2; ++i) {
    readers.emplace_back([&] {
      while (!stop) {
        const agent::Network seen = networkOf(host.model());
        wrong += seen.topoNodes.empty() || seen.topoNodes[0].nodeId != "node 0" ? 1 : 0;
        host.model().hasObject({54, "t1"});
        host.model().labelOf(54, "t1");
      }
    });
  }
  std::vector<std::thread> changers;
  for (int i = 0; i < 4; ++i) {
    changers.emplace_back([&, i] {
      for (int round = 0; round < 15; ++round) {
        wrong += changeEverything(host, "t" + std::to_string(i));
      }
    });
  }
  joinAll(changers);
  stop = true;
  joinAll(readers);
  EXPECT_EQ(0, wrong);
  EXPECT_EQ(host.stored(), host.seen());
  EXPECT_EQ(50U, host.model().topoNodeCount());
}

// A plain reader-writer lock of the system prefers readers and would starve the writer.
TEST(NetworkWriter, CommitsUnderAStreamOfReads) {
  NetworkModel model(wideNetwork(2000));
  std::atomic<bool> stop{false};
  std::vector<std::thread> readers;
  for (int i = 0; i < 4; ++i) {
    readers.emplace_back([&] {
      while (!stop) {
        std::vector<NS_DOMAIN::TopoNode_T> nodes;
        model.appendTopoNodes(nodes);
      }
    });
  }
  const auto start = std::chrono::steady_clock::now();
  for (int i = 0; i < 50; ++i) {
    agent::PreparedChange change = NetworkModel::prepareLabel({54, "node 1"}, std::to_string(i));
    model.apply(change);
  }
  const auto took = std::chrono::steady_clock::now() - start;
  stop = true;
  joinAll(readers);
  EXPECT_LT(took, 20s);
  EXPECT_EQ("49", model.labelOf(54, "node 1"));
}

}  // namespace
