#include "agent/notifications/SessionServant.h"

#include <exception>
#include <new>

namespace agent {

SessionServant::SessionServant(Notifier& notifier) : notifier_(notifier) {}

TopoAgent::Subscription_I_ptr SessionServant::subscribe(
    CosNotifyComm::StructuredPushConsumer_ptr consumer, const char* lastNotificationId) {
  const std::string peer = orb::currentPeer();
  try {
    return notifier_.subscribe(consumer, lastNotificationId, peer);
  } catch (const globaldefs::ProcessingFailureException& failure) {
    logRefusal(peer, failure.errorReason.in());
    throw;
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
}

void SessionServant::logRefusal(const std::string& peer, const std::string& why) {
  refusals_.refused("a subscription of " + (peer.empty() ? "this process" : peer) +
                    " is refused: " + why);
}

}  // namespace agent
