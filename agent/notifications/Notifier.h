// Delivery of notifications: from the module's calls to whoever listens.

#ifndef AGENT_NOTIFICATIONS_NOTIFIER_H
#define AGENT_NOTIFICATIONS_NOTIFIER_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "agent/base/RefusalLog.h"
#include "agent/notifications/NotificationIds.h"
#include "agent/notifications/Receiver.h"
#include "orb/idl/TopoAgent.h"
#include "orb/idl/globaldefs.h"
#include "orb/idl/notifications.h"
#include "orb/notification.h"
#include "orb/orb.h"

namespace agent {

struct NotifierOptions {
  std::size_t queueLimit = 10000;  // notifications that wait for one receiver
  // Estimated memory of the notifications that wait for one receiver.
  std::size_t queueBytes = std::size_t{64} << 20;
  std::size_t maxSubscribers = 1000;
  std::size_t maxSubscribersPerPeer = 100;
  // New subscribers whose consumers have not answered yet.
  std::size_t maxUnanswered = 200;
  std::size_t maxUnansweredPerPeer = 50;
  std::string channel;  // an event channel's reference in any form; empty for none
  std::chrono::milliseconds pushTimeout{3000};     // of one call to a receiver
  std::chrono::milliseconds idleCheck{60000};      // a silent receiver is looked for this often
  std::chrono::milliseconds firstBackOff{100};     // before the channel is tried again,
  std::chrono::milliseconds longestBackOff{5000};  // doubling up to this
  Receiver::Wait wait = Receiver::waitFor;
};

struct NotifierStatus {
  std::uint64_t notifications = 0;            // made since the start
  std::uint64_t subscribersDropped = 0;       // since the start
  TopoAgent::ReceiverStatusList_T receivers;  // the channel first
};

// Gives every notification an id and a place in the queue of each receiver: one order for all. Each
// receiver has a thread of its own, so that none waits for another, and whoever makes a
// notification waits for none.
//
// Thread-safety: any thread, also from within a consumer's push. Made and destroyed by one thread,
// never from within a request or a push.
class Notifier {
 public:
  using Clock = std::function<std::chrono::system_clock::time_point()>;

  // Starts the channel's thread; a channel that does not answer is no failure. The server outlives
  // this object. Ids are reserved by one thread at a time, while nobody else can make notifications
  // or subscribe: the reservation does not call back. The clock is asked by any thread. Throws what
  // the first reservation throws.
  Notifier(orb::Server& server, NotifierOptions options, NotificationIds::Reserve reserve,
           Clock clock);

  // Ends all subscriptions, whose waiting notifications are not sent any more, and waits for the
  // calls to receivers that are under way: one push time-out at most. REQUIRES: the session is
  // not served any more, and nobody makes notifications.
  ~Notifier();

  Notifier(const Notifier&) = delete;
  Notifier& operator=(const Notifier&) = delete;

  void objectCreated(const globaldefs::NVSList_T& name, const CORBA::Any& object,
                     bool edgePointRelated);
  void objectDeleted(const globaldefs::NVSList_T& name, bool edgePointRelated);
  // The body is what remains of the event, or null.
  void attributesChanged(const globaldefs::NVSList_T& name,
                         const notifications::NVList_T& attributes, bool edgePointRelated,
                         const CORBA::Any* body);

  // There should have been notifications, nobody knows how many, but they were not made. Each
  // receiver gets word of them in its place among the others.
  void reportGap();

  // As TopoAgent::Session_I says; a new reference for the caller. A consumer that subscribes twice
  // has two subscriptions and gets everything twice. An event may arrive before this returns. The
  // receiver's thread asks the consumer whether it exists before it pushes, and drops it otherwise.
  // The peer is the address that the limits per peer count. Throws
  // globaldefs::ProcessingFailureException.
  TopoAgent::Subscription_I_ptr subscribe(CosNotifyComm::StructuredPushConsumer_ptr consumer,
                                          const std::string& lastNotificationId,
                                          const std::string& peer);

  // False when there is no such subscription any more.
  bool unsubscribe(std::uint64_t subscription);
  bool isSubscribed(std::uint64_t subscription);

  NotifierStatus status();

  // Waits until everything that was made so far is sent, no longer than this; whether it is.
  // Receivers that do not answer at present are not waited for, and then it is not.
  bool flush(std::chrono::milliseconds longest);

 private:
  struct Subscription {
    std::shared_ptr<Receiver> receiver;
    std::shared_ptr<const PortableServer::ObjectId> object;
    std::string peer;
  };
  using Subscriptions = std::map<std::uint64_t, Subscription>;

  void publish(std::unique_ptr<CosNotification::StructuredEvent> event);
  Notification notificationLocked(std::uint64_t id,
                                  std::unique_ptr<CosNotification::StructuredEvent> event);
  void forEachLocked(const std::function<void(Receiver&)>& visit);
  Receiver::Settings receiverSettings() const;
  std::shared_ptr<Receiver> makeReceiver(CosNotifyComm::StructuredPushConsumer_ptr consumer,
                                         std::uint64_t number);
  std::uint64_t nextNumber();
  void admit(std::uint64_t number, Subscription subscription,
             const std::string& lastNotificationId);
  void checkReference(CORBA::Object_ptr consumer);
  void checkLimitsLocked(const std::string& peer);
  std::optional<Gap> gapSince(const std::string& lastNotificationId);
  bool end(std::uint64_t number, bool dropped);
  void deactivate(const PortableServer::ObjectId& object);
  void joinEnded();

  const NotifierOptions options_;
  const CORBA::ORB_var orb_;
  const Clock clock_;
  RefusalLog subscriberLog_{std::chrono::steady_clock::now, 20, std::chrono::seconds(10)};
  std::shared_ptr<Receiver> channel_;  // null when there is none

  std::mutex mutex_;
  // Guarded by mutex_. No call to the ORB is made under it.
  NotificationIds ids_;
  Subscriptions subscriptions_;
  Subscriptions ended_;  // their threads may still run
  std::uint64_t lastNumber_ = 0;
  std::uint64_t notifications_ = 0;
  std::uint64_t dropped_ = 0;
  bool ending_ = false;

  const PortableServer::POA_var poa_;  // of the subscriptions
};

}  // namespace agent

#endif
