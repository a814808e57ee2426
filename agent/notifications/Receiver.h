// One receiver of notifications: a queue, and a thread that sends the queued notifications.

#ifndef AGENT_NOTIFICATIONS_RECEIVER_H
#define AGENT_NOTIFICATIONS_RECEIVER_H

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "agent/base/Log.h"
#include "agent/notifications/EventQueue.h"
#include "agent/notifications/NotificationSink.h"
#include "agent/notifications/StructuredEvents.h"
#include "orb/idl/TopoAgent.h"
#include "sync/Mutex.h"

namespace agent {

// Delivers notifications and gap reports to one sink, in order. Retries an event channel without a
// limit. Drops a subscriber at the first fatal failure.
//
// Thread-safety: any thread, except where a function says otherwise.
// Ownership: owns the sink and the thread; shares the events.
// Errors: failures of the sink are logged and appear in status().
class Receiver {
 public:
  // Waits on the condition variable until the condition is true or the time is over. Returns the
  // condition. The lock belongs to the mutex that guards the condition.
  using Wait =
      std::function<bool(std::condition_variable&, std::unique_lock<std::mutex>&,
                         std::chrono::milliseconds, const std::function<bool()>& condition)>;

  // Waits in real time.
  static bool waitFor(std::condition_variable& changed, std::unique_lock<std::mutex>& lock,
                      std::chrono::milliseconds longest, const std::function<bool()>& condition);

  struct Settings {
    std::string name;  // the receiver's address, for the log and the status
    bool isChannel = false;
    EventQueue::Limits queue{10000, std::size_t{64} << 20};
    std::chrono::milliseconds idleCheck{60000};  // longest time without a call to the sink
    std::chrono::milliseconds firstBackOff{100};
    std::chrono::milliseconds longestBackOff{5000};
    std::function<EventTime()> clock;
    Wait wait = waitFor;
    std::function<void(int level, const std::string& text)> log = agent::log;  // from any thread
  };

  // Called once, on the receiver's thread, after a fatal failure of the sink.
  using OnDropped = std::function<void()>;

  // onDropped may be empty.
  Receiver(std::unique_ptr<NotificationSink> sink, Settings settings, OnDropped onDropped);

  // Stops and joins the thread. REQUIRES: the caller is not that thread.
  ~Receiver();

  Receiver(const Receiver&) = delete;
  Receiver& operator=(const Receiver&) = delete;

  // Starts the thread, once. Throws std::system_error.
  void start();

  // Queues a notification; does not wait for the sink. Does nothing after stop().
  void offer(const Notification& notification);

  // Queues a gap behind the queued notifications. status() counts the gap as lost.
  void reportGap(const Gap& gap);

  // Queues a gap that ended before the receiver subscribed: status() does not count the gap.
  // REQUIRES: called before the first offer.
  void beginWithGap(const Gap& gap);

  // Clears the queue and asks the thread to end, without waiting for the thread.
  void stop();

  // Waits until the thread has ended. REQUIRES: stop() was called; one caller at a time, never the
  // receiver's own thread.
  void join();

  // Whether join() would return at once.
  bool ended() const { return ended_.load(); }

  // Whether the sink has been connected at least once.
  bool hasAnswered() const { return answered_.load(); }

  TopoAgent::ReceiverStatus_T status();

  // The numbers of status(), and the estimated memory of the queue.
  struct Load {
    bool isConnected = true;
    std::size_t queued = 0;
    std::size_t bytes = 0;
    std::uint64_t sent = 0;
    std::uint64_t lost = 0;
  };
  Load load();

  // Waits until the queue is empty and every call has ended. Returns false at the deadline, and at
  // once while the sink is unavailable.
  bool waitUntilDrained(std::chrono::steady_clock::time_point deadline);

 private:
  enum class Link { kNew, kUp, kDown };
  enum class Work { kDeliver, kCheck, kStop };

  // Called by the thread. A result of false ends the thread.
  void run();
  bool runOnceGuarded() noexcept;
  bool runOnce();
  bool recoverFrom(const char* reason);
  bool connect();
  Work waitForWork();
  bool deliverCurrent();
  CallOutcome pushCurrent();
  Delivery current();
  template <typename Call>
  CallOutcome attempt(CallOutcome::Kind ofChannel, Call call);
  void completeCurrent();
  void discardCurrent(const std::string& reason);
  void requeueCurrentGap();
  bool continueAfter(const CallOutcome& outcome);
  bool backOff();
  void drop(const char* reason);
  void markUp();
  void markDown(const std::string& reason);
  Link exchangeLink(Link link);

  void queueGap(const Gap& gap, std::uint64_t lost);
  template <typename Text>
  void logLine(int level, Text text) const noexcept;
  bool isDrained();
  bool isDrainedLocked() const REQUIRES(mutex_);
  std::uint64_t undeliveredLocked() const REQUIRES(mutex_);

  const Settings settings_;
  const OnDropped onDropped_;

  // Used by the thread only.
  const std::unique_ptr<NotificationSink> sink_;
  bool connected_ = false;
  std::chrono::milliseconds backOff_;  // after the next failure
  int rejections_ = 0;                 // of current_

  std::atomic<bool> stopping_{false};  // set under mutex_
  std::atomic<bool> ended_{true};
  std::atomic<bool> answered_{false};

  // Not locked during a call of the sink.
  Mutex mutex_;
  std::condition_variable workArrived_;  // an entry in queue_, or stopping_
  std::condition_variable drained_;      // isDrainedLocked(), stopping_ or kDown
  EventQueue queue_ GUARDED_BY(mutex_);
  // Taken from queue_, not yet delivered. Only the receiver's thread writes current_.
  std::optional<Delivery> current_ GUARDED_BY(mutex_);
  Link link_ GUARDED_BY(mutex_) = Link::kNew;
  // queue_ has evicted notifications since queue_ was last empty.
  bool overflowing_ GUARDED_BY(mutex_) = false;
  std::uint64_t delivered_ GUARDED_BY(mutex_) = 0;  // notifications
  // Lost notifications that queue_ has not evicted.
  std::uint64_t discarded_ GUARDED_BY(mutex_) = 0;

  std::thread thread_;
};

}  // namespace agent

#endif
