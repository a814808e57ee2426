// The session, through which clients subscribe.

#ifndef AGENT_NOTIFICATIONS_SESSIONSERVANT_H
#define AGENT_NOTIFICATIONS_SESSIONSERVANT_H

#include <chrono>
#include <string>

#include "agent/base/RefusalLog.h"
#include "agent/notifications/Notifier.h"
#include "orb/idl/TopoAgent.h"

namespace agent {

// Logs refused subscriptions, and translates failures of the notifier into CORBA exceptions.
//
// Reference counted, as all servants. Stops being served before the notifier ends.
class SessionServant final : public POA_TopoAgent::Session_I {
 public:
  explicit SessionServant(Notifier& notifier);

  TopoAgent::Subscription_I_ptr subscribe(CosNotifyComm::StructuredPushConsumer_ptr consumer,
                                          const char* lastNotificationId) override;

 private:
  void logRefusal(const std::string& peer, const std::string& why);

  Notifier& notifier_;
  RefusalLog refusals_{std::chrono::steady_clock::now, 20, std::chrono::seconds(10)};
};

}  // namespace agent

#endif
