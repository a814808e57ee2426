// The module's views, computed by the servant in one batch.

#include <benchmark/benchmark.h>

#include <utility>

#include "bench/Networks.h"
#include "bench/Platform.h"
#include "tests/support/Pairs.h"
#include "tests/unit/topomanagementmgrimpl/ServantUnderTest.h"

namespace bench {
namespace {

using topologicalLink::TopologicalLinkIterator_I_var;
using topologicalLink::TopologicalLinkList_T_var;
using TopoManagementManager::NodeIterator_I_var;
using TopoManagementManager::NodeList_T_var;

constexpr CORBA::ULong kAll = 0xffffffff;  // more than any view has

std::size_t sizeOf(const benchmark::State& state) {
  return static_cast<std::size_t>(state.range(0));
}

// Requires the number of records: a failed view is fast and would falsify the result.
template <typename View>
void measure(benchmark::State& state, agent::Network network, std::size_t expected, View view) {
  Platform platform(std::move(network));
  const Servant_var servant = new ServantUnderTest;
  CORBA::ULong records = 0;
  for (auto each : state) {
    static_cast<void>(each);
    records = view(*servant.in());
    state.PauseTiming();
    platform.tidy();
    state.ResumeTiming();
  }
  if (records != expected) {
    state.SkipWithError("the view is not whole");
  }
  state.counters["records/s"] =
      benchmark::Counter(records, benchmark::Counter::kIsIterationInvariantRate);
}

void TopoView(benchmark::State& state) {
  measure(state, tree(sizeOf(state)), sizeOf(state), [](ServantUnderTest& servant) {
    NodeList_T_var nodes;
    NodeIterator_I_var iterator;
    servant.getTopoSubnetworkViewInfo(kAll, nodes.out(), iterator.out());
    return nodes->length();
  });
}

void ProtectView(benchmark::State& state) {
  measure(state, tree(sizeOf(state)), sizeOf(state), [](ServantUnderTest& servant) {
    NodeList_T_var nodes;
    NodeIterator_I_var iterator;
    servant.getProtectSubnetworkViewInfo(kAll, nodes.out(), iterator.out());
    return nodes->length();
  });
}

// All nodes except the top.
void measureViewBelowTop(benchmark::State& state, agent::Network network) {
  const globaldefs::NVSList_T top = nameOf({{"EMS", kEms}, {"TopoSubnetwork", kTop}});
  measure(state, std::move(network), sizeOf(state) - 1, [&](ServantUnderTest& servant) {
    NodeList_T_var nodes;
    NodeIterator_I_var iterator;
    servant.getViewInfoByTopoSubnetwork(top, kAll, nodes.out(), iterator.out());
    return nodes->length();
  });
}

void ViewBySubnetworkOfTree(benchmark::State& state) {
  measureViewBelowTop(state, tree(sizeOf(state)));
}

void ViewBySubnetworkOfChain(benchmark::State& state) {
  measureViewBelowTop(state, chain(sizeOf(state)));
}

void ClockSourceView(benchmark::State& state) {
  measure(state, clock(sizeOf(state)), sizeOf(state), [](ServantUnderTest& servant) {
    NodeList_T_var nodes;
    NodeIterator_I_var iterator;
    servant.getClockSourceSubnetworkViewInfo(kAll, nodes.out(), iterator.out());
    return nodes->length();
  });
}

void ClockLinkView(benchmark::State& state) {
  measure(state, clock(sizeOf(state)), sizeOf(state), [](ServantUnderTest& servant) {
    TopologicalLinkList_T_var links;
    TopologicalLinkIterator_I_var iterator;
    servant.getAllClockSourceViewlTopologicalLinks(kAll, links.out(), iterator.out());
    return links->length();
  });
}

void sizes(benchmark::internal::Benchmark* benchmark) {
  benchmark->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);
}

BENCHMARK(TopoView)->Apply(sizes);
BENCHMARK(ProtectView)->Apply(sizes);
BENCHMARK(ViewBySubnetworkOfTree)->Apply(sizes);
BENCHMARK(ViewBySubnetworkOfChain)->Apply(sizes);
BENCHMARK(ClockSourceView)->Apply(sizes);
BENCHMARK(ClockLinkView)->Apply(sizes);

}  // namespace
}  // namespace bench
