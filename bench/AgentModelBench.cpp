// Loading a network into a store, opening the store again, and changing one node at run time. With
// a store on disk every change is durable when the measured call returns.

#include <benchmark/benchmark.h>

#include <memory>
#include <string>

#include "agent/base/FailureCodes.h"
#include "agent/changes/NetworkWriter.h"
#include "agent/changes/NodeService.h"
#include "agent/formats/NetworkReader.h"
#include "agent/model/NetworkModel.h"
#include "agent/store/sqlite/SqliteStore.h"
#include "bench/Networks.h"
#include "tests/support/TemporaryDirectory.h"

namespace bench {
namespace {

enum class Place { kDisk, kMemory };

agent::Network network(const benchmark::State& state) {
  return tree(static_cast<std::size_t>(state.range(0)));
}

// The folder of the stores. Every store is new.
class Stores {
 public:
  explicit Stores(Place place) : place_(place) {}

  std::string next() {
    return place_ == Place::kMemory ? agent::SqliteStore::kInMemory
                                    : directory_.file(std::to_string(++count_) + ".db");
  }

 private:
  const Place place_;
  const support::TemporaryDirectory directory_;
  int count_ = 0;
};

void countNodes(benchmark::State& state) {
  state.counters["nodes/s"] = benchmark::Counter(static_cast<double>(state.range(0)),
                                                 benchmark::Counter::kIsIterationInvariantRate);
}

// --- A whole network.

void ReadNetworkFile(benchmark::State& state) {
  const support::TemporaryDirectory directory;
  const std::string file = directory.write("network.json", networkFile(network(state)));
  for (auto each : state) {
    static_cast<void>(each);
    benchmark::DoNotOptimize(agent::readNetworkFile(file));
  }
  countNodes(state);
}

// Loads a network into a new store, as at the first start.
void LoadNetwork(benchmark::State& state, Place place) {
  Stores stores(place);
  const agent::Network loaded = network(state);
  for (auto each : state) {
    static_cast<void>(each);
    agent::SqliteStore store(stores.next());
    store.load(loaded);
    benchmark::DoNotOptimize(agent::NetworkModel(loaded).topoNodeCount());
  }
  countNodes(state);
}

// Reads the network from an existing store, as at a restart.
void OpenNetwork(benchmark::State& state) {
  Stores stores(Place::kDisk);
  const std::string path = stores.next();
  agent::SqliteStore(path).load(network(state));
  for (auto each : state) {
    static_cast<void>(each);
    agent::SqliteStore store(path);
    benchmark::DoNotOptimize(agent::NetworkModel(store.read()).topoNodeCount());
  }
  countNodes(state);
}

// --- One node.

class Host {
 public:
  Host(const benchmark::State& state, Place place)
      : stores_(place), store_(stores_.next()), model_(network(state)) {
    store_.load(network(state));
  }

  agent::NodeService& nodes() { return nodes_; }

 private:
  Stores stores_;
  agent::SqliteStore store_;
  agent::NetworkModel model_;
  agent::NetworkWriter writer_{store_, model_};
  agent::NodeService nodes_{writer_};
};

NS_DOMAIN::TopoNode_T newNode() {
  NS_DOMAIN::TopoNode_T node;
  node.nodeId = "new";
  node.parentId = kTop;
  node.nativeName = "New";
  node.nodeType = NS_DOMAIN::kTopoSubnetwork;
  node.parentType = NS_DOMAIN::kTopoSubnetwork;
  return node;
}

// Fails the benchmark when a change fails: failed changes are fast and would falsify the result.
void require(benchmark::State& state, const agent::Outcome& outcome) {
  if (outcome.code != agent::kSuccess) {
    state.SkipWithError(outcome.reason.c_str());
  }
}

void CreateNode(benchmark::State& state, Place place) {
  Host host(state, place);
  const auto node = newNode();
  std::size_t removed = 0;
  for (auto each : state) {
    static_cast<void>(each);
    require(state, host.nodes().create(node));
    state.PauseTiming();
    require(state, host.nodes().remove(node.nodeId, removed));
    state.ResumeTiming();
  }
}

void DeleteNode(benchmark::State& state, Place place) {
  Host host(state, place);
  const auto node = newNode();
  std::size_t removed = 0;
  for (auto each : state) {
    static_cast<void>(each);
    state.PauseTiming();
    require(state, host.nodes().create(node));
    state.ResumeTiming();
    require(state, host.nodes().remove(node.nodeId, removed));
  }
}

void RenameNode(benchmark::State& state, Place place) {
  Host host(state, place);
  int names = 0;
  for (auto each : state) {
    static_cast<void>(each);
    require(state, host.nodes().rename("NE=5", "Name " + std::to_string(++names)));
  }
}

void sizes(benchmark::internal::Benchmark* benchmark) {
  benchmark->Arg(10000)->Arg(100000)->UseRealTime();
}

void wholes(benchmark::internal::Benchmark* benchmark) {
  sizes(benchmark->Unit(benchmark::kMillisecond));
}

void changes(benchmark::internal::Benchmark* benchmark) {
  sizes(benchmark->Unit(benchmark::kMicrosecond));
}

BENCHMARK(ReadNetworkFile)->Apply(wholes);
BENCHMARK_CAPTURE(LoadNetwork, disk, Place::kDisk)->Apply(wholes);
BENCHMARK_CAPTURE(LoadNetwork, memory, Place::kMemory)->Apply(wholes);
BENCHMARK(OpenNetwork)->Apply(wholes);
BENCHMARK_CAPTURE(CreateNode, disk, Place::kDisk)->Apply(changes);
BENCHMARK_CAPTURE(CreateNode, memory, Place::kMemory)->Apply(changes);
BENCHMARK_CAPTURE(RenameNode, disk, Place::kDisk)->Apply(changes);
BENCHMARK_CAPTURE(RenameNode, memory, Place::kMemory)->Apply(changes);
BENCHMARK_CAPTURE(DeleteNode, disk, Place::kDisk)->Apply(changes);
BENCHMARK_CAPTURE(DeleteNode, memory, Place::kMemory)->Apply(changes);

}  // namespace
}  // namespace bench
