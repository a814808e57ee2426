// The CORBA object through which clients subscribe.

#ifndef AGENT_NOTIFICATIONS_SESSIONSERVANT_H
#define AGENT_NOTIFICATIONS_SESSIONSERVANT_H

#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "agent/base/RefusalLog.h"
#include "agent/notifications/Notifier.h"
#include "orb/idl/TopoAgent.h"

namespace agent {

// Forwards subscriptions to the notifier. Logs refused subscriptions, and records consumers to
// which the agent does not push.
//
// Thread-safety: any thread.
// Ownership: borrows the notifier, which outlives every request to the servant.
// Errors: NO_PERMISSION for a consumer to which the agent does not push, ProcessingFailureException
// for another refusal, NO_MEMORY and INTERNAL for other failures;
// CORBA system exceptions of the notifier pass.
class SessionServant final : public POA_TopoAgent::Session_I {
 public:
  // Returns the reason why the agent does not push to a consumer at the destinations, subscribed by
  // the client; "" if the agent does. Called on the threads of requests and of receivers; may
  // block.
  using ConsumerCheck = std::function<std::string(const std::vector<orb::Destination>& destinations,
                                                  const orb::Peer& client)>;

  // eventAccess: the result of getEventAccess(). The check runs for the addresses of a consumer's
  // reference, of references to which the consumer forwards calls, and of new connections.
  // Without a check, the agent pushes to every consumer.
  SessionServant(Notifier& notifier, TopoAgent::EventAccess_T eventAccess,
                 ConsumerCheck check = nullptr);

  TopoAgent::Subscription_I_ptr subscribe(CosNotifyComm::StructuredPushConsumer_ptr consumer,
                                          const char* lastNotificationId) override;

  TopoAgent::EventAccess_T getEventAccess() override { return eventAccess_; }

 private:
  orb::DestinationCheck checkConsumer(CORBA::Object_ptr consumer);
  void logRefusal(const std::string& peer, const std::string& why);

  Notifier& notifier_;
  const TopoAgent::EventAccess_T eventAccess_;
  const ConsumerCheck check_;
  RefusalLog refusals_{std::chrono::steady_clock::now, 20, std::chrono::seconds(10), kLogTraces};
};

}  // namespace agent

#endif
