// Subscribes to an agent's notifications and passes them to the inbox.

#ifndef CLIENT_WATCH_SUBSCRIPTION_H
#define CLIENT_WATCH_SUBSCRIPTION_H

#include <memory>

#include "client/agent/Reload.h"
#include "client/base/AgentAccess.h"
#include "client/watch/Inbox.h"
#include "client/watch/KnownNodes.h"
#include "orb/idl/TopoAgent.h"
#include "orb/orb.h"

namespace topoctl {

class Consumer;

// At most one subscription at the agent, with a Consumer that pushes to the inbox.
//
// Thread-safety: one thread. Owns the consumer; borrows everything else.
// Errors: Failure and the CORBA exceptions of the calls; see each function.
class Subscription {
 public:
  // REQUIRES: the POA is active.
  Subscription(CORBA::ORB_ptr orb, PortableServer::POA_ptr poa, const AgentAccess& access,
               Inbox& inbox, RetryPolicy retry);

  // Calls stopReceiving(); the agent is not called.
  ~Subscription();
  Subscription(const Subscription&) = delete;
  Subscription& operator=(const Subscription&) = delete;

  // Resolves the agent's reference again and subscribes after the inbox's last id, or from the next
  // notification on when the agent does not know that id. In the second case the agent reports no
  // gap, so the caller must read the view. Notifications of an earlier subscription are rejected
  // from now on. Throws the Failures of callObject(), and kCallFailed when the agent returns a
  // nil subscription; exceptions of the call pass.
  void subscribe();

  // Whether the agent makes notifications, as of the latest subscribe().
  TopoAgent::EventAccess_T eventAccess() const { return eventAccess_; }

  // Pings the agent. Returns false when the agent has dropped the subscription. Exceptions of the
  // call pass. REQUIRES: subscribe() has succeeded.
  bool isAlive();

  // Reads the topology subnetwork view. Throws the Failures of callManager() and fetchAll();
  // exceptions of the calls pass.
  KnownNodes readNodes();

  // Rejects all further notifications. The agent is not called. Never throws.
  void stopReceiving();

  // Calls stopReceiving(), then unsubscribes at the agent with a timeout of two seconds. Never
  // throws.
  void unsubscribe();

 private:
  CORBA::ORB_ptr orb_;
  PortableServer::POA_ptr poa_;
  const AgentAccess& access_;
  Inbox& inbox_;
  const RetryPolicy retry_;                         // of readNodes()
  PortableServer::Servant_var<Consumer> consumer_;  // nil: not receiving
  TopoAgent::Subscription_I_var subscription_;
  TopoAgent::EventAccess_T eventAccess_ = TopoAgent::EA_ALLOWED;
};

}  // namespace topoctl

#endif
