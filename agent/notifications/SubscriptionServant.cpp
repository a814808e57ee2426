#include "agent/notifications/SubscriptionServant.h"

namespace agent {

SubscriptionServant::SubscriptionServant(Notifier& notifier, std::uint64_t number)
    : notifier_(notifier), number_(number) {}

// The object is deactivated after the end of its subscription, so that a request may come between.
void SubscriptionServant::ping() {
  if (!notifier_.isSubscribed(number_)) {
    throw CORBA::OBJECT_NOT_EXIST(0, CORBA::COMPLETED_NO);
  }
}

void SubscriptionServant::unsubscribe() {
  if (!notifier_.unsubscribe(number_)) {
    throw CORBA::OBJECT_NOT_EXIST(0, CORBA::COMPLETED_NO);
  }
}

}  // namespace agent
