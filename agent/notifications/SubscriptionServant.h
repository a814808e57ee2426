// One subscription, as its client sees it.

#ifndef AGENT_NOTIFICATIONS_SUBSCRIPTIONSERVANT_H
#define AGENT_NOTIFICATIONS_SUBSCRIPTIONSERVANT_H

#include <cstdint>

#include "agent/notifications/Notifier.h"
#include "orb/idl/TopoAgent.h"

namespace agent {

// The notifier waits for the requests to it before it ends.
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
