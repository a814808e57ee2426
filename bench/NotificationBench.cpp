// Delivery of notifications: structured events are made, numbered, queued and pushed over the
// loopback to consumers in another process. A push ends with the reply of the consumer.

#include <benchmark/benchmark.h>

#include <chrono>
#include <memory>
#include <stdexcept>
#include <string>

#include "agent/notifications/Notifier.h"
#include "orb/orb.h"
#include "tests/support/Pairs.h"
#include "tests/support/Process.h"

namespace bench {
namespace {

constexpr int kBurst = 1000;  // below the limit of a receiver's queue
constexpr std::chrono::seconds kPatience{60};

notifications::NVList_T newName() {
  notifications::NVList_T attributes;
  attributes.length(1);
  attributes[0].name = CORBA::string_dup("nativeEMSName");
  attributes[0].value <<= "Frankfurt am Main";
  return attributes;
}

// A notifier and the process of its consumers.
class Delivery {
 public:
  Delivery(orb::Server& server, int subscribers)
      : consumers_(TOPO_BENCH_CONSUMERS, {std::to_string(subscribers)}),
        notifier_(server, {}, {0, [this] { return ++lastChange_; }},
                  [] { return std::chrono::system_clock::now(); }) {
    for (int i = 0; i < subscribers; ++i) {
      subscribe(server.get(), consumers_.readLine());
    }
  }

  // Whether all queues are empty.
  bool deliver(int count) {
    for (int i = 0; i < count; ++i) {
      notifier_.attributesChanged(name_, attributes_, false, nullptr);
    }
    return notifier_.flush(kPatience);
  }

  // Whether this number of subscribers has received all notifications.
  bool reached(int subscribers) {
    const agent::NotifierStatus status = notifier_.status();
    bool all = status.receivers.length() == static_cast<CORBA::ULong>(subscribers);
    for (CORBA::ULong i = 0; i < status.receivers.length(); ++i) {
      all = all && status.receivers[i].sent == status.notifications;
    }
    return all;
  }

 private:
  void subscribe(CORBA::ORB_ptr orb, const std::string& reference) {
    const CORBA::Object_var object = orb->string_to_object(reference.c_str());
    const CosNotifyComm::StructuredPushConsumer_var consumer =
        CosNotifyComm::StructuredPushConsumer::_narrow(object.in());
    const auto subscription = notifier_.subscribe(consumer.in(), "", "bench");
    if (!subscription.ok()) {
      throw std::runtime_error(subscription.outcome().reason);
    }
  }

  const globaldefs::NVSList_T name_ = nameOf({{"EMS", "Bench"}, {"ManagedElement", "5"}});
  const notifications::NVList_T attributes_ = newName();
  std::uint64_t lastChange_ = 0;
  support::Process consumers_;
  agent::Notifier notifier_;
};

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
