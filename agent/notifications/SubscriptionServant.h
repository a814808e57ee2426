// The CORBA object of one subscription.

#ifndef AGENT_NOTIFICATIONS_SUBSCRIPTIONSERVANT_H
#define AGENT_NOTIFICATIONS_SUBSCRIPTIONSERVANT_H

#include <cstdint>

#include "agent/notifications/Notifier.h"
#include "orb/idl/TopoAgent.h"

namespace agent {

// Lets a client check and end a subscription.
//
// Thread-safety: any thread.
// Ownership: borrows the notifier, whose destructor waits for running requests.
// Errors: OBJECT_NOT_EXIST after the end of the subscription.
class SubscriptionServant final : public POA_TopoAgent::Subscription_I {
 public:
  SubscriptionServant(Notifier& notifier, std::uint64_t number);

  void ping() override;
  void unsubscribe() override;

 private:
  Notifier& notifier_;
  const std::uint64_t number_;
};

}  // namespace agent

#endif
