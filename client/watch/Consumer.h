// The object that an agent pushes notifications to.

#ifndef CLIENT_WATCH_CONSUMER_H
#define CLIENT_WATCH_CONSUMER_H

#include "client/watch/Inbox.h"
#include "orb/notification.h"
#include "orb/orb.h"

namespace topoctl {

class Consumer final : public virtual POA_CosNotifyComm::StructuredPushConsumer {
 public:
  // Borrows the inbox.
  Consumer(Inbox& inbox, Inbox::Subscription subscription)
      : inbox_(inbox), subscription_(subscription) {}

  // Returns when there was room. OBJECT_NOT_EXIST once the subscription is over.
  void push_structured_event(const CosNotification::StructuredEvent& event) override {
    if (!inbox_.push(subscription_, decode(event))) {
      throw CORBA::OBJECT_NOT_EXIST();
    }
  }

  void disconnect_structured_push_consumer() override { inbox_.end(subscription_); }

  // Of no interest: everything that is pushed is printed.
  void offer_change(const CosNotification::EventTypeSeq&,
                    const CosNotification::EventTypeSeq&) override {}

 private:
  Inbox& inbox_;
  const Inbox::Subscription subscription_;
};

}  // namespace topoctl

#endif
