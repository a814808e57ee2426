// The topo subnetwork view of a running agent, fetched over IIOP on the loopback by this process.

#include <benchmark/benchmark.h>

#include <memory>
#include <stdexcept>

#include "bench/Networks.h"
#include "tests/integration/Listeners.h"

namespace bench {
namespace {

using TopoManagementManager::NodeIterator_I_var;
using TopoManagementManager::NodeList_T_var;
using TopoManagementManager::TopoMgr_I_var;

// One agent at a time, with a network of the requested size.
class Wire {
 public:
  const TopoMgr_I_var& managerOf(std::size_t nodes) {
    if (!agent_ || nodes != nodes_) {
      agent_.reset();
      const std::string file = directory_.write("network.json", networkFile(tree(nodes)));
      agent_ =
          std::make_unique<integration::RunningAgent>(std::vector<std::string>{"--network", file});
      manager_ = client_.manager(*agent_);
      nodes_ = nodes;
    }
    return manager_;
  }

 private:
  integration::Client client_;
  const support::TemporaryDirectory directory_;
  std::unique_ptr<integration::RunningAgent> agent_;
  TopoMgr_I_var manager_;
  std::size_t nodes_ = 0;
};

// Fetches a whole view: the first batch from the manager, the rest from the iterator.
CORBA::ULong fetch(const TopoMgr_I_var& manager, CORBA::ULong batch) {
  NodeList_T_var nodes;
  NodeIterator_I_var iterator;
  manager->getTopoSubnetworkViewInfo(batch, nodes.out(), iterator.out());
  CORBA::ULong fetched = nodes->length();
  for (bool more = !CORBA::is_nil(iterator.in()); more;) {
    more = iterator->next_n(batch, nodes.out());
    fetched += nodes->length();
  }
  return fetched;
}

void wholeView(benchmark::State& state, Wire& wire) {
  const auto size = static_cast<std::size_t>(state.range(0));
  const auto batch = static_cast<CORBA::ULong>(state.range(1));
  const TopoMgr_I_var& manager = wire.managerOf(size);
  for (auto each : state) {
    static_cast<void>(each);
    if (fetch(manager, batch) != size) {
      state.SkipWithError("the view is not whole");
    }
  }
  state.counters["nodes/s"] =
      benchmark::Counter(static_cast<double>(size), benchmark::Counter::kIsIterationInvariantRate);
}

// A call without records: the fixed cost of a batch.
void emptyBatch(benchmark::State& state, Wire& wire) {
  NodeList_T_var nodes;
  NodeIterator_I_var iterator;
  wire.managerOf(1000)->getTopoSubnetworkViewInfo(1, nodes.out(), iterator.out());
  for (auto each : state) {
    static_cast<void>(each);
    iterator->next_n(0, nodes.out());
  }
  iterator->destroy();
}

void registerAll(Wire& wire) {
  benchmark::RegisterBenchmark("EmptyBatch/1000", [&](auto& state) { emptyBatch(state, wire); })
      ->Unit(benchmark::kMicrosecond)
      ->UseRealTime();
  benchmark::RegisterBenchmark("WholeView", [&](auto& state) { wholeView(state, wire); })
      ->ArgNames({"nodes", "batch"})
      ->ArgsProduct({{1000, 10000, 100000}, {10, 1000, 10000}})
      ->Unit(benchmark::kMillisecond)
      ->UseRealTime();
}

}  // namespace
}  // namespace bench

int main(int argc, char* argv[]) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
    return 1;
  }
  bench::Wire wire;
  bench::registerAll(wire);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
