// The queue between the ORB's threads, which receive notifications, and the thread that prints.

#ifndef CLIENT_WATCH_INBOX_H
#define CLIENT_WATCH_INBOX_H

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>

#include "client/watch/Event.h"
#include "sync/Mutex.h"

namespace topoctl {

// A bounded queue of events. Events come from one subscription at a time: a new event of an earlier
// subscription is rejected, but a queued event stays in the queue.
//
// Thread-safety: any thread. Owns its events. Functions throw std::bad_alloc only.
class Inbox {
 public:
  using SubscriptionId = std::uint64_t;

  enum class State {
    kEvent,
    kTimeout,
    kEnded,    // the agent has ended the subscription
    kStopped,  // stop() was called
  };
  struct TakeResult {
    State state;
    Event event;  // of kEvent
  };

  // REQUIRES: capacity > 0.
  explicit Inbox(std::size_t capacity) : capacity_(capacity) {}

  // ---- for the threads that receive

  // Waits while the queue is full, then appends the event. Drops an event whose id is not above the
  // previous id of the subscription: the agent has repeated a call. Returns false when the
  // subscription is not the current one or the inbox is stopped.
  bool push(SubscriptionId subscription, Event event);

  // Marks the subscription as ended by the agent. Does nothing for an earlier subscription.
  void endSubscription(SubscriptionId subscription);

  // ---- for the thread that prints

  // Starts a new subscription in place of the current one, and wakes the threads that wait in
  // push() for the current one.
  SubscriptionId startSubscription();

  // The highest id that has arrived, lost notifications included; "" before the first id.
  std::string lastId() const;

  // Waits for an event until the timeout. The order of precedence is kStopped, kEvent, kEnded.
  TakeResult take(std::chrono::milliseconds timeout);

  // Moves queued events to the end of `events` until `events` has `limit` elements.
  void takeAll(std::deque<Event>& events, std::size_t limit);

  // Waits until stop() is called, at most for the duration.
  void waitForStop(std::chrono::milliseconds duration);

  bool isStopped() const;

  // ---- for any thread

  // Stops the inbox permanently: push() returns false and no function waits any more.
  void stop();

 private:
  bool isCurrent(SubscriptionId subscription) const REQUIRES(mutex_) {
    return !stopped_ && subscription == subscription_;
  }
  void rememberId(const Event& event) REQUIRES(mutex_);

  const std::size_t capacity_;
  mutable Mutex mutex_;
  std::condition_variable changed_;

  std::deque<Event> events_ GUARDED_BY(mutex_);
  SubscriptionId subscription_ GUARDED_BY(mutex_) = 0;
  bool ended_ GUARDED_BY(mutex_) = false;  // the agent has ended the current subscription
  bool stopped_ GUARDED_BY(mutex_) = false;
  std::optional<std::uint64_t> previousId_ GUARDED_BY(mutex_);  // of the current subscription
  std::string lastId_ GUARDED_BY(mutex_);
};

}  // namespace topoctl

#endif
