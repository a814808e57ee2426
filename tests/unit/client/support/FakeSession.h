// An agent's session with one subscriber at a time, to which the test pushes notifications.

#ifndef TESTS_UNIT_CLIENT_SUPPORT_FAKESESSION_H
#define TESTS_UNIT_CLIENT_SUPPORT_FAKESESSION_H

#include <cstdint>
#include <mutex>
#include <optional>

#include "orb/idl/TopoAgent.h"
#include "orb/notification.h"
#include "tests/unit/client/support/FakeAgent.h"

namespace topoctl {

class FakeSession final : public virtual POA_TopoAgent::Session_I {
 public:
  // Borrows the script; keeps a reference to the POA.
  FakeSession(Script& script, PortableServer::POA_ptr poa)
      : script_(script), poa_(PortableServer::POA::_duplicate(poa)) {}

  TopoAgent::Subscription_I_ptr subscribe(CosNotifyComm::StructuredPushConsumer_ptr consumer,
                                          const char* lastNotificationId) override;
  TopoAgent::EventAccess_T getEventAccess() override;

  // Sets the answer of later calls of getEventAccess().
  void setEventAccess(TopoAgent::EventAccess_T access);

  // From now on the session has no operation getEventAccess, as in an agent of an earlier version.
  void removeEventAccess();

  // Subscriptions after a higher id are rejected from now on, as by an agent that has never issued
  // the id.
  void rejectIdsAbove(std::uint64_t id);

  // The latest consumer; the caller owns the reference.
  CosNotifyComm::StructuredPushConsumer_ptr consumer();

  // Drops the latest subscription.
  void drop();

 private:
  Script& script_;
  const PortableServer::POA_var poa_;
  std::mutex mutex_;
  CosNotifyComm::StructuredPushConsumer_var consumer_;  // these are guarded by mutex_
  PortableServer::ObjectId_var subscription_;
  std::uint64_t newestId_ = ~std::uint64_t{0};
  std::optional<TopoAgent::EventAccess_T> eventAccess_ = TopoAgent::EA_ALLOWED;
};

}  // namespace topoctl

#endif
