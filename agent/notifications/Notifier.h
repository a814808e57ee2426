// Delivers the module's notifications to the subscribers and to the event channel.

#ifndef AGENT_NOTIFICATIONS_NOTIFIER_H
#define AGENT_NOTIFICATIONS_NOTIFIER_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "agent/base/OperationResult.h"
#include "agent/base/RefusalLog.h"
#include "agent/notifications/IdSequence.h"
#include "agent/notifications/Receiver.h"
#include "orb/checkedcalls.h"
#include "orb/idl/TopoAgent.h"
#include "orb/idl/globaldefs.h"
#include "orb/idl/notifications.h"
#include "orb/notification.h"
#include "orb/orb.h"
#include "sync/Mutex.h"

namespace agent {

struct NotifierOptions {
  std::size_t queueLimit = 10000;                  // notifications in the queue of one receiver
  std::size_t queueBytes = std::size_t{64} << 20;  // their estimated memory
  std::size_t maxSubscribers = 1000;
  std::size_t maxSubscribersPerPeer = 100;
  // Subscribers whose consumers have not answered yet.
  std::size_t maxUnanswered = 200;
  std::size_t maxUnansweredPerPeer = 50;
  std::string channel;  // an event channel's reference in any form; empty for no channel
  std::chrono::milliseconds pushTimeout{3000};  // of one remote call
  std::chrono::milliseconds idleCheck{60000};   // longest time without a call to a receiver
  // Between two attempts to reach the channel: the first pause, and the limit for doubled pauses.
  std::chrono::milliseconds firstBackOff{100};
  std::chrono::milliseconds longestBackOff{5000};
  Receiver::Wait wait = Receiver::waitFor;
  IdSequence::Limits ids;
};

struct NotifierStatus {
  std::uint64_t notifications = 0;            // made since the start
  std::uint64_t subscribersDropped = 0;       // since the start
  TopoAgent::ReceiverStatusList_T receivers;  // the channel first
};

// Sums over the receivers of one kind. Notifications of subscribers that have ended count as sent
// and lost.
struct ReceiversLoad {
  std::size_t receivers = 0;
  std::size_t connected = 0;
  std::size_t queued = 0;   // notifications
  std::size_t bytes = 0;    // estimated memory of the queues
  std::size_t longest = 0;  // notifications in the longest queue
  std::uint64_t sent = 0;
  std::uint64_t lost = 0;

  void add(const Receiver::Load& receiver);
};

struct NotifierLoad {
  std::uint64_t notifications = 0;       // made since the start
  std::uint64_t gaps = 0;                // reported to receivers since the start
  std::uint64_t subscribersDropped = 0;  // since the start
  ReceiversLoad subscribers;
  ReceiversLoad channel;
};

// The numbers of the changes that notifications are about.
struct ChangeNumbers {
  std::uint64_t last = 0;  // newest change before the notifier was made
  // Returns the change that the calling thread handles, or IdSequence::kNoChange. Called by any
  // thread.
  std::function<std::uint64_t()> inProgress;
};

// Gives every notification an id and a place in the queue of each receiver: all receivers get the
// notifications in the same order. Each receiver has its own thread. No function waits for a
// receiver, except flush and the destructor.
//
// Thread-safety: any thread, also within a consumer's push. One thread constructs and destroys the
// notifier, outside of requests and pushes.
// Ownership: owns the receivers and the POA of the subscriptions; borrows the server.
// Errors: a notification that cannot be made becomes a gap of every receiver, and the cause is
// thrown.
class Notifier {
 public:
  using Clock = std::function<std::chrono::system_clock::time_point()>;

  // Starts the channel's thread; an unavailable channel is no failure. Any thread may call the
  // clock. REQUIRES: the server outlives the notifier.
  Notifier(orb::Server& server, NotifierOptions options, ChangeNumbers changes, Clock clock);

  // Ends all subscriptions, drops the queued notifications and waits for running calls to
  // receivers: pushTimeout at most. REQUIRES: the session is not served any more, and no thread
  // makes notifications.
  ~Notifier();

  Notifier(const Notifier&) = delete;
  Notifier& operator=(const Notifier&) = delete;

  // Make a notification of the change in progress. Throw std::bad_alloc and CORBA exceptions.
  void objectCreated(const globaldefs::NVSList_T& name, const CORBA::Any& object,
                     bool edgePointRelated);
  void objectDeleted(const globaldefs::NVSList_T& name, bool edgePointRelated);
  // body: the remainder of the event's body, or null.
  void attributesChanged(const globaldefs::NVSList_T& name,
                         const notifications::NVList_T& attributes, bool edgePointRelated,
                         const CORBA::Any* body);

  // Reports to every receiver a gap of unknown size, as for events that made no notification.
  void reportGap();

  // Implements TopoAgent::Session_I::subscribe; returns a new reference. A consumer that subscribes
  // twice gets every event twice. An event may arrive before this returns. The receiver's thread
  // checks that the consumer exists before its first push. peer: the client's address, for the
  // limits per peer. destinations: see ConsumerSink; called on the receiver's thread. Fails with
  // kInvalidInput and kTooMuch; throws CORBA system exceptions.
  Result<TopoAgent::Subscription_I_var> subscribe(
      CosNotifyComm::StructuredPushConsumer_ptr consumer, const std::string& lastNotificationId,
      const std::string& peer, orb::DestinationCheck destinations = nullptr);

  // Returns false when there is no such subscription.
  bool unsubscribe(std::uint64_t subscription);
  bool isSubscribed(std::uint64_t subscription);

  NotifierStatus status();
  NotifierLoad load();

  // Waits until all queues are empty and all calls have ended. Returns false at the timeout and
  // when a receiver is unavailable.
  bool flush(std::chrono::milliseconds longest);

 private:
  struct Subscription {
    std::shared_ptr<Receiver> receiver;
    std::shared_ptr<const PortableServer::ObjectId> object;
    std::string peer;
  };
  using Subscriptions = std::map<std::uint64_t, Subscription>;

  void publish(std::unique_ptr<CosNotification::StructuredEvent> event);
  void reportExhaustionLocked() REQUIRES(mutex_);
  Notification notificationLocked(std::uint64_t id,
                                  std::unique_ptr<CosNotification::StructuredEvent> event)
      REQUIRES(mutex_);
  void reportGapLocked(const Gap& gap) REQUIRES(mutex_);
  void forEachLocked(const std::function<void(Receiver&)>& visit) REQUIRES(mutex_);
  Receiver::Settings receiverSettings() const;
  std::shared_ptr<Receiver> makeReceiver(std::unique_ptr<NotificationSink> sink, std::string name,
                                         std::uint64_t number);
  std::uint64_t nextNumber();
  Outcome checkReference(CORBA::Object_ptr consumer);
  Outcome admit(std::uint64_t number, Subscription subscription,
                const std::string& lastNotificationId);
  Outcome checkLimitsLocked(const std::string& peer) REQUIRES(mutex_);
  Result<std::optional<Gap>> gapSinceLocked(const std::string& lastNotificationId) REQUIRES(mutex_);
  Result<TopoAgent::Subscription_I_var> activate(std::uint64_t number,
                                                 const Subscription& subscription);
  bool end(std::uint64_t number, bool dropped);
  void deactivate(const PortableServer::ObjectId& object);
  void destroyEnded();

  const NotifierOptions options_;
  const CORBA::ORB_var orb_;
  const std::function<std::uint64_t()> changeInProgress_;
  const Clock clock_;
  RefusalLog subscriberLog_{std::chrono::steady_clock::now, 20, std::chrono::seconds(10)};
  std::shared_ptr<Receiver> channel_;  // null without a channel

  // Not locked during a call of the ORB or of the disk.
  Mutex mutex_;
  IdSequence ids_ GUARDED_BY(mutex_);
  std::uint64_t exhaustedId_ GUARDED_BY(mutex_) = 0;  // the gap id that was logged last
  Subscriptions subscriptions_ GUARDED_BY(mutex_);
  // Stopped receivers, whose threads may still run.
  Subscriptions ended_ GUARDED_BY(mutex_);
  std::uint64_t lastNumber_ GUARDED_BY(mutex_) = 0;
  std::uint64_t notifications_ GUARDED_BY(mutex_) = 0;
  std::uint64_t dropped_ GUARDED_BY(mutex_) = 0;
  std::uint64_t gaps_ GUARDED_BY(mutex_) = 0;
  std::uint64_t sentToEnded_ GUARDED_BY(mutex_) = 0;
  std::uint64_t lostByEnded_ GUARDED_BY(mutex_) = 0;
  bool ending_ GUARDED_BY(mutex_) = false;

  const PortableServer::POA_var poa_;  // of the subscriptions
};

}  // namespace agent

#endif
