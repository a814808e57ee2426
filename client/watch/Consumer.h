// The servant that an agent pushes notifications to.

#ifndef CLIENT_WATCH_CONSUMER_H
#define CLIENT_WATCH_CONSUMER_H

#include "client/watch/Inbox.h"
#include "orb/notification.h"
#include "orb/orb.h"

namespace topoctl {

// Passes the notifications of one subscription to the inbox.
//
// Thread-safety: any thread of the ORB. Borrows the inbox, which must outlive the activation.
// Errors: std::bad_alloc, which the agent sees as a CORBA system exception; see also
// push_structured_event().
class Consumer final : public virtual POA_CosNotifyComm::StructuredPushConsumer {
 public:
  Consumer(Inbox& inbox, Inbox::SubscriptionId subscription)
      : inbox_(inbox), subscription_(subscription) {}

  // Blocks while the inbox is full. Throws OBJECT_NOT_EXIST when the subscription is not the
  // current one.
  void push_structured_event(const CosNotification::StructuredEvent& event) override {
    if (!inbox_.push(subscription_, decode(event))) {
      throw CORBA::OBJECT_NOT_EXIST();
    }
  }

  void disconnect_structured_push_consumer() override { inbox_.endSubscription(subscription_); }

  // Does nothing: every event is printed, also an event of a type that was not offered.
  void offer_change(const CosNotification::EventTypeSeq&,
                    const CosNotification::EventTypeSeq&) override {}

 private:
  Inbox& inbox_;
  const Inbox::SubscriptionId subscription_;
};

}  // namespace topoctl

#endif
