// The two algorithms that make views linear in the size of the network, each beside the plain loop
// that is its oracle in the property tests.

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "bench/Networks.h"
#include "tests/property/Oracles.h"
#include "topomanagementmgr/ParentChains.h"
#include "topomanagementmgr/TopoManagementMgr.h"

namespace bench {
namespace {

using NS_DOMAIN::NEIndex;
using Nodes = std::vector<NS_DOMAIN::TopoNode_T>;

std::size_t sizeOf(const benchmark::State& state) {
  return static_cast<std::size_t>(state.range(0));
}

// --- Elements that the topology does not show: one in ten.

template <typename Exclude>
void measureExclusion(benchmark::State& state, Exclude exclude) {
  std::vector<NEIndex> all(sizeOf(state));
  std::vector<NEIndex> shown;
  for (std::size_t i = 0; i < all.size(); ++i) {
    all[i].number = static_cast<std::int32_t>(i);
    if (i % 10 != 0) {
      shown.push_back(all[i]);
    }
  }
  for (auto each : state) {
    static_cast<void>(each);
    benchmark::DoNotOptimize(exclude(all, shown));
  }
}

void IndexesNotShown(benchmark::State& state) {
  measureExclusion(state, TopoManagementMgr::indexesNotShown);
}

void IndexesNotShownByNestedLoop(benchmark::State& state) {
  measureExclusion(state, oracle::indexesNotShown);
}

// --- Nodes below a subnetwork: all nodes.

void measureChains(benchmark::State& state, const Nodes& nodes) {
  const std::string top = kTop;
  for (auto each : state) {
    static_cast<void>(each);
    topo::ParentChains chains(top, nodes);
    for (std::size_t i = 0; i < nodes.size(); ++i) {
      benchmark::DoNotOptimize(chains.isBelow(i));
    }
  }
}

void measurePlainWalk(benchmark::State& state, const Nodes& nodes) {
  const std::string top = kTop;
  for (auto each : state) {
    static_cast<void>(each);
    for (const auto& node : nodes) {
      benchmark::DoNotOptimize(oracle::isBelow(top, node.parentId, nodes));
    }
  }
}

void BelowTopOfTree(benchmark::State& state) {
  measureChains(state, tree(sizeOf(state)).topoNodes);
}

void BelowTopOfTreeByPlainWalk(benchmark::State& state) {
  measurePlainWalk(state, tree(sizeOf(state)).topoNodes);
}

void BelowTopOfChain(benchmark::State& state) {
  measureChains(state, chain(sizeOf(state)).topoNodes);
}

void BelowTopOfChainByPlainWalk(benchmark::State& state) {
  measurePlainWalk(state, chain(sizeOf(state)).topoNodes);
}

void sizes(benchmark::internal::Benchmark* benchmark) {
  benchmark->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);
}

// Sizes for the plain loops, which take the cube of the length of a chain: minutes for larger
// sizes.
void smallSizes(benchmark::internal::Benchmark* benchmark) {
  benchmark->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);
}

BENCHMARK(IndexesNotShown)->Apply(sizes);
BENCHMARK(IndexesNotShownByNestedLoop)->Apply(smallSizes);
BENCHMARK(BelowTopOfTree)->Apply(sizes);
BENCHMARK(BelowTopOfTreeByPlainWalk)->Apply(smallSizes);
BENCHMARK(BelowTopOfChain)->Apply(sizes);
BENCHMARK(BelowTopOfChainByPlainWalk)->Arg(1000)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace bench
