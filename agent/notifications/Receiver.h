// One receiver of notifications: a queue, and a thread that empties it.

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
#include "orb/idl/TopoAgent.h"

namespace agent {

// Thread-safety: any thread, where nothing else is said.
class Receiver {
 public:
  // Waits on the condition variable until the condition holds or the time is over, and returns the
  // condition. The lock is of the mutex that guards the condition.
  using Wait =
      std::function<bool(std::condition_variable&, std::unique_lock<std::mutex>&,
                         std::chrono::milliseconds, const std::function<bool()>& condition)>;

  // Waits in real time.
  static bool waitFor(std::condition_variable& changed, std::unique_lock<std::mutex>& lock,
                      std::chrono::milliseconds longest, const std::function<bool()>& condition);

  struct Settings {
    std::string name;  // where it is, for messages
    bool isChannel = false;
    EventQueue::Limits queue{10000, std::size_t{64} << 20};
    std::chrono::milliseconds idleCheck{60000};
    std::chrono::milliseconds firstBackOff{100};
    std::chrono::milliseconds longestBackOff{5000};
    std::function<EventTime()> clock;
    Wait wait = waitFor;
    std::function<void(int level, const std::string& text)> log = agent::log;  // from any thread
  };

  // Is called once, on the receiver's thread, when the sink is gone for good.
  using OnGone = std::function<void()>;

  Receiver(std::unique_ptr<Sink> sink, Settings settings, OnGone onGone);

  // Stops and waits for the thread. Not on that thread.
  ~Receiver();

  Receiver(const Receiver&) = delete;
  Receiver& operator=(const Receiver&) = delete;

  // Starts the thread; what was offered before waits. Throws std::system_error. Once.
  void start();

  // Never wait for the sink. After the stop they do nothing.
  void offer(const Notification& notification);
  void offerLost(const LostEvents& lost);

  // One notification that never was made, for which an id stands.
  void miss(std::uint64_t id);

  // Drops what waits and asks the thread to end; does not wait for it.
  void stop();

  // Waits until the thread has ended after a stop. Not on that thread, from one thread at a time.
  void join();

  // Whether the thread has ended, so that join returns at once.
  bool ended() const { return ended_.load(); }

  // Whether the sink was connected at least once.
  bool hasAnswered() const { return answered_.load(); }

  TopoAgent::ReceiverStatus_T status();

  // Waits until nothing waits any more; false when the time is over, or at once when the sink does
  // not answer.
  bool waitUntilSent(std::chrono::steady_clock::time_point end);

 private:
  enum class Link { kNew, kUp, kDown };
  enum class Work { kSend, kCheck, kStop };

  // The thread.
  void run();
  bool safeStep() noexcept;
  bool step();
  bool connect();
  Work waitForWork();
  bool send();
  CallOutcome pushHand();
  template <typename Call>
  CallOutcome attempt(CallOutcome::Kind ofChannel, Call call);
  bool sent(const CallOutcome& outcome);
  void emptyHand();
  void giveUpHand(const std::string& why);
  void returnLost();
  bool go(const CallOutcome& outcome);
  bool backOff();
  void gone(const char* why);
  bool breakDown(const char* why);
  void setUp();
  void setDown(const std::string& why);
  Link changeLink(Link link);

  std::string who() const;
  template <typename Text>
  void say(int level, Text text) const noexcept;
  bool nothingWaits();
  bool nothingWaitsLocked() const;
  std::uint64_t waitingLocked() const;

  const Settings settings_;
  const OnGone onGone_;

  // Of the thread alone.
  const std::unique_ptr<Sink> sink_;
  bool connected_ = false;
  std::chrono::milliseconds pause_;  // after the next failure
  int refusals_ = 0;                 // of the notification in hand

  std::atomic<bool> stopping_{false};  // set under mutex_
  std::atomic<bool> ended_{true};
  std::atomic<bool> answered_{false};

  std::mutex mutex_;
  std::condition_variable wake_;
  std::condition_variable sent_;
  // Guarded by mutex_; the sink is not called under it.
  EventQueue queue_;
  std::optional<Delivery>
      hand_;  // what is being sent, or is to be sent again; changed by the thread
  Link link_ = Link::kNew;
  bool overflowing_ = false;  // since the queue was empty
  std::uint64_t sentCount_ = 0;
  std::uint64_t notSent_ = 0;  // beside those that overflowed

  std::thread thread_;
};

}  // namespace agent

#endif
