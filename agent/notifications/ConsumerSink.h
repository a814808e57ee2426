// The sink for the consumer of one subscription.

#ifndef AGENT_NOTIFICATIONS_CONSUMERSINK_H
#define AGENT_NOTIFICATIONS_CONSUMERSINK_H

#include <chrono>

#include "agent/notifications/NotificationSink.h"
#include "orb/checkedcalls.h"
#include "orb/orb.h"

namespace agent {

// Calls a consumer. Repeats a call once when the connection was closed, because ORBs close idle
// connections. So an event may arrive twice, with the same id.
//
// Thread-safety: as NotificationSink.
// Ownership: holds a reference to the consumer.
// Errors: every failure of a push is kFatal, and so is a check of an unreachable or deleted
// consumer, and of a consumer at an address that the DestinationCheck rejects.
class ConsumerSink final : public NotificationSink {
 public:
  // Sets the timeout of the reference. Without a check, calls go to every address. The check
  // rejects an address with NO_PERMISSION and the minor code permission_minor::kPushAddress.
  ConsumerSink(CosNotifyComm::StructuredPushConsumer_ptr consumer,
               std::chrono::milliseconds callTimeout, orb::DestinationCheck destinations);

  CallOutcome connect(const Stopping& stopping) override;
  CallOutcome push(const CosNotification::StructuredEvent& event,
                   const Stopping& stopping) override;
  CallOutcome check(const Stopping& stopping) override;
  void disconnect() override;

 private:
  template <typename Call>
  void callConsumer(const Stopping& stopping, Call call);

  const CosNotifyComm::StructuredPushConsumer_var consumer_;
  const orb::DestinationCheck destinations_;
};

}  // namespace agent

#endif
