// The CORBA object through which clients subscribe.

#ifndef AGENT_NOTIFICATIONS_SESSIONSERVANT_H
#define AGENT_NOTIFICATIONS_SESSIONSERVANT_H

#include <chrono>
#include <string>

#include "agent/base/RefusalLog.h"
#include "agent/notifications/Notifier.h"
#include "orb/idl/TopoAgent.h"

namespace agent {

// Forwards subscriptions to the notifier, and logs refused subscriptions at a limited rate.
//
// Thread-safety: any thread.
// Ownership: borrows the notifier, which outlives every request to the servant.
// Errors: ProcessingFailureException for a refusal, NO_MEMORY and INTERNAL for other failures;
// CORBA system exceptions of the notifier pass.
class SessionServant final : public POA_TopoAgent::Session_I {
 public:
  // eventAccess: the answer of getEventAccess().
  SessionServant(Notifier& notifier, TopoAgent::EventAccess_T eventAccess);

  TopoAgent::Subscription_I_ptr subscribe(CosNotifyComm::StructuredPushConsumer_ptr consumer,
                                          const char* lastNotificationId) override;

  TopoAgent::EventAccess_T getEventAccess() override { return eventAccess_; }

 private:
  void logRefusal(const std::string& peer, const std::string& why);

  Notifier& notifier_;
  const TopoAgent::EventAccess_T eventAccess_;
  RefusalLog refusals_{std::chrono::steady_clock::now, 20, std::chrono::seconds(10), kLogTraces};
};

}  // namespace agent

#endif
