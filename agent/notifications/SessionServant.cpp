#include "agent/notifications/SessionServant.h"

namespace agent {

SessionServant::SessionServant(Notifier& notifier) : notifier_(notifier) {}

TopoAgent::Subscription_I_ptr SessionServant::subscribe(
    CosNotifyComm::StructuredPushConsumer_ptr consumer, const char* lastNotificationId) {
  return notifier_.subscribe(consumer, lastNotificationId);
}

}  // namespace agent
