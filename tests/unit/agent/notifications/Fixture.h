// A notifier on a running ORB, and consumers in this process.

#ifndef UNIT_AGENT_NOTIFICATIONS_FIXTURE_H
#define UNIT_AGENT_NOTIFICATIONS_FIXTURE_H

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <iosfwd>
#include <memory>
#include <string>

#include "agent/notifications/Notifier.h"
#include "orb/orb.h"
#include "tests/unit/agent/notifications/Events.h"

namespace notification_tests {

// Records each event, then calls the hook.
class Consumer final : public POA_CosNotifyComm::StructuredPushConsumer {
 public:
  using Hook = std::function<void(const CosNotification::StructuredEvent&)>;

  explicit Consumer(Hook hook = nullptr) : hook_(std::move(hook)) {}

  void push_structured_event(const CosNotification::StructuredEvent& event) override;
  void disconnect_structured_push_consumer() override {}
  void offer_change(const CosNotification::EventTypeSeq& added,
                    const CosNotification::EventTypeSeq& removed) override;

  Record<Delivered> received;

 private:
  const Hook hook_;
};

// The failed outcome of a subscription.
struct Refusal {
  std::uint32_t code = agent::kSuccess;
  std::string reason;
};
bool operator==(const Refusal& left, const Refusal& right);
void PrintTo(const Refusal& refusal, std::ostream* out);

Refusal invalidInput(const std::string& reason);
Refusal capacityExceeded(const std::string& reason);
const Refusal kAccepted;

// A reference counted servant and its reference.
struct ServedConsumer {
  PortableServer::ServantBase_var owner;
  Consumer* servant = nullptr;
  CosNotifyComm::StructuredPushConsumer_var reference;

  Record<Delivered>& received() { return servant->received; }
};

class NotifierFixture : public testing::Test {
 protected:
  NotifierFixture();
  ~NotifierFixture() override;

  // Makes the notifier. The ids are 1, 2, 3 and so on.
  void start();
  // Makes a new notifier after a further change. The ids are idOf(1, 1) and so on.
  void restart();
  agent::ChangeNumbers changes();

  void publish(int count);

  // A test whose hook refers to local variables destroys the notifier before the variables.
  ServedConsumer makeConsumer(Consumer::Hook hook = nullptr);
  CosNotifyComm::StructuredPushConsumer_ptr consumerAt(const std::string& reference);

  TopoAgent::Subscription_I_var subscribe(const ServedConsumer& consumer,
                                          const std::string& last = "",
                                          const std::string& peer = "peer");

  TopoAgent::Subscription_I_var subscribeAt(CosNotifyComm::StructuredPushConsumer_ptr consumer,
                                            const std::string& last = "",
                                            const std::string& peer = "peer");

  // Subscribes. Returns the refusal of the notifier, or kAccepted.
  Refusal refusal(CosNotifyComm::StructuredPushConsumer_ptr consumer, const std::string& last,
                  const std::string& peer = "peer");

  ReceiverStates receivers();
  // Waits for these states of the receivers.
  bool becomes(const ReceiverStates& wanted);

  static bool isSubscribed(TopoAgent::Subscription_I_ptr subscription);

  CORBA::ORB_ptr orb() { return server_->get(); }

  std::unique_ptr<orb::Server> server_;
  std::uint64_t lastChange_ = 0;
  std::atomic<std::uint64_t> change_{0};  // in progress
  agent::NotifierOptions options_;
  std::unique_ptr<agent::Notifier> notifier_;
};

}  // namespace notification_tests

#endif
