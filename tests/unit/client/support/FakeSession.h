// An agent's session: one subscriber at a time, to which a test sends what it likes.

#ifndef TESTS_UNIT_CLIENT_SUPPORT_FAKESESSION_H
#define TESTS_UNIT_CLIENT_SUPPORT_FAKESESSION_H

#include <cstdint>
#include <mutex>

#include "orb/idl/TopoAgent.h"
#include "orb/notification.h"
#include "tests/unit/client/support/FakeAgent.h"

namespace topoctl {

class FakeSession final : public virtual POA_TopoAgent::Session_I {
 public:
  // Both borrowed.
  FakeSession(Script& script, PortableServer::POA_ptr poa)
      : script_(script), poa_(PortableServer::POA::_duplicate(poa)) {}

  TopoAgent::Subscription_I_ptr subscribe(CosNotifyComm::StructuredPushConsumer_ptr consumer,
                                          const char* lastNotificationId) override;

  // From here on ids above this one are refused, as by an agent that has never given them.
  void refuseIdsAbove(std::uint64_t id);

  // The consumer that subscribed last, for the caller.
  CosNotifyComm::StructuredPushConsumer_ptr consumer();

  // The agent forgets the last subscription.
  void drop();

 private:
  Script& script_;
  const PortableServer::POA_var poa_;
  std::mutex mutex_;
  CosNotifyComm::StructuredPushConsumer_var consumer_;  // these are guarded by mutex_
  PortableServer::ObjectId_var subscription_;
  std::uint64_t newestId_ = ~std::uint64_t{0};
};

}  // namespace topoctl

#endif
