// Measures the delivery of notifications beside a bare push loop, in turns. All consumers are in
// other processes.
//
//   bench_events WARM_UPS ROUNDS CASE...
//
// CASE is one of
//   one:N   seconds for an event to one consumer, in a burst of N through the agent's notifier
//   ten:N   the same to ten consumers
//   raw:N   seconds for the same event to one consumer, N times in a loop
// N must be below the limit of a receiver's queue, 10,000.

#include <memory>
#include <stdexcept>

#include "agent/notifications/StructuredEvents.h"
#include "bench/Delivery.h"
#include "bench/end_to_end/Rounds.h"

namespace bench {
namespace {

void deliverAll(Delivery& delivery, int subscribers, int burst) {
  if (!delivery.deliver(burst)) {
    throw std::runtime_error("a subscriber does not answer");
  }
  if (!delivery.reached(subscribers)) {
    throw std::runtime_error("a subscriber has not got everything");
  }
}

// A server has one notifier at a time, so every round has its own notifier and consumers.
Measurement notifierBurst(orb::Server& server, int subscribers, int burst) {
  return [&server, subscribers, burst] {
    Delivery delivery(server, subscribers);
    deliverAll(delivery, subscribers, burst);
    return secondsOf([&] { deliverAll(delivery, subscribers, burst); }) / burst;
  };
}

Measurement rawPushes(orb::Server& server, int burst) {
  const auto process =
      std::make_shared<support::Process>(TOPO_BENCH_CONSUMERS, std::vector<std::string>{"1"});
  const auto consumer = consumerAt(server.get(), process->readLine());
  const std::shared_ptr<CosNotification::StructuredEvent> event =
      agent::attributeValueChange(changedObject(), newName(), false, nullptr);
  agent::stamp(*event, 1, std::chrono::system_clock::now());
  return [process, consumer, event, burst] {
    return secondsOf([&] {
             for (int i = 0; i < burst; ++i) {
               consumer->push_structured_event(*event);
             }
           }) /
           burst;
  };
}

Measurement measurementOf(orb::Server& server, const std::string& argument) {
  const auto burst = static_cast<int>(countIn(argument));
  const std::string name = nameIn(argument);
  if (name == "raw") {
    return rawPushes(server, burst);
  }
  if (name == "one" || name == "ten") {
    return notifierBurst(server, name == "one" ? 1 : 10, burst);
  }
  throw std::invalid_argument("there is no case " + argument);
}

}  // namespace
}  // namespace bench

int main(int argc, char* argv[]) {
  const auto server = orb::startServer({}, {"127.0.0.1", 0}, nullptr);
  const PortableServer::POAManager_var manager = server->rootPoa()->the_POAManager();
  manager->activate();
  return bench::measureInTurns(argc, argv, [&server](const std::string& argument) {
    return bench::measurementOf(*server, argument);
  });
}
