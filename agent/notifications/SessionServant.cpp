#include "agent/notifications/SessionServant.h"

#include <exception>
#include <new>
#include <utility>

#include "agent/base/RequestLog.h"
#include "idl/ObjectKeys.h"
#include "idl/PermissionMinors.h"
#include "platform/agent/Failures.h"

namespace agent {
namespace {

// Throws NO_PERMISSION, and records and logs the refusal, when the agent does not push to a
// destination.
void checkDestinations(const SessionServant::ConsumerCheck& check,
                       const std::vector<orb::Destination>& destinations, const orb::Peer& client) {
  const std::string reason = check(destinations, client);
  if (reason.empty()) {
    return;
  }
  recordRequest(
      {client, object_key::kSession, "subscribe", "", RequestRecord::Outcome::kRefused, reason});
  logRefusal(orb::format(client), "subscribe", reason);
  throw CORBA::NO_PERMISSION(static_cast<CORBA::ULong>(permission_minor::kPushAddress),
                             CORBA::COMPLETED_NO);
}

}  // namespace

SessionServant::SessionServant(Notifier& notifier, TopoAgent::EventAccess_T eventAccess,
                               ConsumerCheck check)
    : notifier_(notifier), eventAccess_(eventAccess), check_(std::move(check)) {}

TopoAgent::Subscription_I_ptr SessionServant::subscribe(
    CosNotifyComm::StructuredPushConsumer_ptr consumer, const char* lastNotificationId) {
  const std::string peer = orb::format(orb::currentPeer());
  Outcome refusal;
  try {
    auto subscription =
        notifier_.subscribe(consumer, lastNotificationId, peer, checkConsumer(consumer));
    if (subscription.ok()) {
      return subscription.value()._retn();
    }
    refusal = subscription.outcome();
  } catch (const CORBA::SystemException& failure) {
    logRefusal(peer, orb::describe(failure));
    throw;
  } catch (const std::bad_alloc&) {
    logRefusal(peer, "out of memory");
    throw CORBA::NO_MEMORY(0, CORBA::COMPLETED_NO);
  } catch (const std::exception& failure) {
    logRefusal(peer, failure.what());
    throw CORBA::INTERNAL(0, CORBA::COMPLETED_NO);
  }
  logRefusal(peer, refusal.reason);
  NS_CORBA::ThrowException(refusal.code, refusal.reason);
  return TopoAgent::Subscription_I::_nil();  // not reached: a refusal is never kSuccess
}

// Checks the addresses of the reference. Returns the check of later calls. Throws NO_PERMISSION.
orb::DestinationCheck SessionServant::checkConsumer(CORBA::Object_ptr consumer) {
  if (!check_ || CORBA::is_nil(consumer)) {
    return nullptr;
  }
  const orb::Peer client = orb::currentPeer();
  checkDestinations(check_, orb::destinationsOf(consumer), client);
  return [check = check_, client](const std::vector<orb::Destination>& destinations) {
    checkDestinations(check, destinations, client);
  };
}

void SessionServant::logRefusal(const std::string& peer, const std::string& reason) {
  refusals_.refused("a subscription of " + (peer.empty() ? "this process" : peer) +
                    " is refused: " + reason);
}

}  // namespace agent
