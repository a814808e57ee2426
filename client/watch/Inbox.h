// What arrived and was not looked at yet, between the ORB's threads and the one that prints.

#ifndef CLIENT_WATCH_INBOX_H
#define CLIENT_WATCH_INBOX_H

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>
#include <string>

#include "client/watch/Event.h"

namespace topoctl {

// Events come from one subscription at a time; what an earlier one still delivers is refused, and
// what it delivered before stays. Thread-safe.
class Inbox {
 public:
  using Subscription = std::uint64_t;

  enum class State {
    kEvent,
    kNothing,  // in the time given
    kEnded,    // the agent said that the subscription is over
    kStopped,
  };
  struct Taken {
    State state;
    Event event;  // for kEvent
  };

  explicit Inbox(std::size_t capacity) : capacity_(capacity) {}

  // ---- for the threads that receive

  // Waits while the inbox is full. Drops an event whose id is not above that of the one before, as
  // a repeated call delivers it. False when the subscription is not the present one any more.
  bool push(Subscription subscription, Event event);

  void end(Subscription subscription);

  // ---- for the thread that prints

  // Ends the subscription that there is, and those that wait in it.
  Subscription begin();

  // The last id that arrived, missed notifications included; "" before there is one.
  std::string lastId() const;

  // Waits for an event; those that are here come first, except for a stop.
  Taken take(std::chrono::milliseconds timeout);

  // Moves events that are here behind those in `events`, as long as these are less than `limit`.
  void takeAll(std::deque<Event>& events, std::size_t limit);

  // Waits for a stop alone.
  void pause(std::chrono::milliseconds duration);

  bool isStopped() const;

  // ---- for any thread

  // For good: nothing is received or waited for any more.
  void stop();

 private:
  bool isOpen(Subscription subscription) const {
    return !stopped_ && subscription == subscription_;
  }
  void note(const Event& event);

  const std::size_t capacity_;
  mutable std::mutex mutex_;
  std::condition_variable changed_;

  // All guarded by mutex_.
  std::deque<Event> events_;
  Subscription subscription_ = 0;
  bool ended_ = false;  // the present subscription, by the agent
  bool stopped_ = false;
  std::optional<std::uint64_t> previousId_;  // of the present subscription
  std::string lastId_;
};

}  // namespace topoctl

#endif
