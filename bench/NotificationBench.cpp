// Delivery of notifications: structured events are made, numbered, queued and pushed over the
// loopback to consumers in another process. A push ends with the reply of the consumer.

#include <benchmark/benchmark.h>

#include "bench/Delivery.h"

namespace bench {
namespace {

constexpr int kBurst = 1000;  // below the limit of a receiver's queue

// An event counts once for every subscriber that receives it.
void burst(benchmark::State& state, orb::Server& server) {
  const auto subscribers = static_cast<int>(state.range(0));
  Delivery delivery(server, subscribers);
  delivery.deliver(1);  // connects
  for (auto each : state) {
    static_cast<void>(each);
    if (!delivery.deliver(kBurst)) {
      state.SkipWithError("a subscriber does not answer");
    }
  }
  if (!delivery.reached(subscribers)) {
    state.SkipWithError("a subscriber has not got everything");
  }
  state.counters["events/s"] = benchmark::Counter(static_cast<double>(kBurst) * subscribers,
                                                  benchmark::Counter::kIsIterationInvariantRate);
}

}  // namespace
}  // namespace bench

int main(int argc, char* argv[]) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
    return 1;
  }
  const auto server = orb::startServer({}, {"127.0.0.1", 0}, nullptr);
  const PortableServer::POAManager_var manager = server->rootPoa()->the_POAManager();
  manager->activate();
  benchmark::RegisterBenchmark("Burst", [&](auto& state) { bench::burst(state, *server); })
      ->ArgName("subscribers")
      ->Arg(1)
      ->Arg(10)
      ->Unit(benchmark::kMillisecond)
      ->UseRealTime();
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
