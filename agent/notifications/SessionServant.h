// The session, through which clients subscribe.

#ifndef AGENT_NOTIFICATIONS_SESSIONSERVANT_H
#define AGENT_NOTIFICATIONS_SESSIONSERVANT_H

#include "agent/notifications/Notifier.h"
#include "orb/idl/TopoAgent.h"

namespace agent {

// Reference counted, as all servants. Stops being served before the notifier ends.
class SessionServant final : public POA_TopoAgent::Session_I {
 public:
  explicit SessionServant(Notifier& notifier);

  TopoAgent::Subscription_I_ptr subscribe(CosNotifyComm::StructuredPushConsumer_ptr consumer,
                                          const char* lastNotificationId) override;

 private:
  Notifier& notifier_;
};

}  // namespace agent

#endif
