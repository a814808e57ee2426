// A direct subscriber.

#ifndef AGENT_NOTIFICATIONS_CONSUMERSINK_H
#define AGENT_NOTIFICATIONS_CONSUMERSINK_H

#include <chrono>

#include "agent/notifications/NotificationSink.h"
#include "orb/orb.h"

namespace agent {

// A call whose connection was closed is made once more: a consumer's ORB closes what it deems idle.
// So an event may arrive twice; its id tells. Any other failure is for good.
class ConsumerSink final : public NotificationSink {
 public:
  // The time-out becomes that of the reference.
  ConsumerSink(CosNotifyComm::StructuredPushConsumer_ptr consumer,
               std::chrono::milliseconds callTimeout);

  CallOutcome connect(const Stopping& stopping) override;
  CallOutcome push(const CosNotification::StructuredEvent& event,
                   const Stopping& stopping) override;
  CallOutcome check(const Stopping& stopping) override;
  void disconnect() override;

 private:
  const CosNotifyComm::StructuredPushConsumer_var consumer_;
};

}  // namespace agent

#endif
