// The way in which an agent's notifications reach the inbox.

#ifndef CLIENT_WATCH_SUBSCRIPTION_H
#define CLIENT_WATCH_SUBSCRIPTION_H

#include <memory>

#include "client/base/AgentAccess.h"
#include "client/watch/Inbox.h"
#include "client/watch/KnownNodes.h"
#include "orb/idl/TopoAgent.h"
#include "orb/orb.h"

namespace topoctl {

class Consumer;

class Subscription {
 public:
  // All borrowed. The POA serves.
  Subscription(CORBA::ORB_ptr orb, PortableServer::POA_ptr poa, const AgentAccess& access,
               Inbox& inbox);

  // Receives nothing afterwards, but does not tell the agent.
  ~Subscription();
  Subscription(const Subscription&) = delete;
  Subscription& operator=(const Subscription&) = delete;

  // Finds the agent anew and subscribes, telling it the inbox's last id, or as a new consumer when
  // the agent does not know that id; the view must then be read to know what was missed. What an
  // earlier subscription delivers is refused from here on. Throws what connectSession throws;
  // exceptions of the call pass.
  void subscribe();

  // Whether the agent still has the subscription. Exceptions of the call pass.
  bool stands();

  // The nodes of the topology subnetwork view. Throws what connect and fetchAll throw; exceptions
  // of the calls pass.
  KnownNodes readNodes();

  // Receives nothing afterwards.
  void close();

  // Also tells the agent, unless it takes long to hear. Never throws.
  void unsubscribe();

 private:
  CORBA::ORB_ptr orb_;
  PortableServer::POA_ptr poa_;
  const AgentAccess& access_;
  Inbox& inbox_;
  PortableServer::Servant_var<Consumer> consumer_;  // nil when there is none
  TopoAgent::Subscription_I_var subscription_;
};

}  // namespace topoctl

#endif
