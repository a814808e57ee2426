// The waits of receivers, in place of those in real time.

#ifndef UNIT_AGENT_NOTIFICATIONS_WAITS_H
#define UNIT_AGENT_NOTIFICATIONS_WAITS_H

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <vector>

#include "agent/notifications/Receiver.h"

namespace notification_tests {

// Records how long each thread that finds its condition false would wait. A short wait times out at
// once, a longer one lasts until its condition holds.
//
// Thread-safety: any thread; outlives the receivers.
class Waits {
 public:
  using Lengths = std::vector<std::chrono::milliseconds>;

  // The hook is called at the beginning of each wait, on its thread.
  explicit Waits(std::chrono::milliseconds longestShort, std::function<void()> hook = nullptr);

  Waits(const Waits&) = delete;
  Waits& operator=(const Waits&) = delete;

  agent::Receiver::Wait function();

  Lengths begun();

  // How many threads are in a wait. A thread in a wait does not own the receiver's mutex.
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
