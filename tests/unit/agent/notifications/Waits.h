// Waits of receivers without real time.

#ifndef UNIT_AGENT_NOTIFICATIONS_WAITS_H
#define UNIT_AGENT_NOTIFICATIONS_WAITS_H

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <vector>

#include "agent/notifications/Receiver.h"

namespace notification_tests {

// Records the length of each wait whose condition is false at first. A short wait times out at
// once. A longer wait ends when its condition is true.
//
// Thread-safety: any thread; outlives the receivers.
class Waits {
 public:
  using Lengths = std::vector<std::chrono::milliseconds>;

  // The waiting thread calls the hook at the beginning of each wait.
  explicit Waits(std::chrono::milliseconds longestShort, std::function<void()> hook = nullptr);

  Waits(const Waits&) = delete;
  Waits& operator=(const Waits&) = delete;

  agent::Receiver::Wait function();

  Lengths begun();

  // The number of waiting threads. A waiting thread does not own the receiver's mutex.
  int present();

 private:
  bool wait(std::condition_variable& changed, std::unique_lock<std::mutex>& lock,
            std::chrono::milliseconds longest, const std::function<bool()>& condition);
  void begin(std::chrono::milliseconds longest);
  void end();

  const std::chrono::milliseconds longestShort_;
  const std::function<void()> hook_;

  std::mutex mutex_;
  // Guarded by mutex_.
  Lengths begun_;
  int present_ = 0;
};

}  // namespace notification_tests

#endif
