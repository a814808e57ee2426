// A reader-writer lock that lets writers through however many readers keep coming.

#ifndef AGENT_MODEL_TURNSTILEMUTEX_H
#define AGENT_MODEL_TURNSTILEMUTEX_H

#include <mutex>
#include <shared_mutex>

namespace agent {

// For std::unique_lock and std::shared_lock. Readers pass a turnstile, in which a writer stands
// from when it comes until it goes: so it waits only for the readers that were there before it. A
// thread that reads must not begin to read again.
class TurnstileMutex {
 public:
  void lock() {
    turnstile_.lock();
    mutex_.lock();
  }

  void unlock() {
    mutex_.unlock();
    turnstile_.unlock();
  }

  void lock_shared() {
    const std::lock_guard<std::mutex> passing(turnstile_);
    mutex_.lock_shared();
  }

  void unlock_shared() { mutex_.unlock_shared(); }

 private:
  std::mutex turnstile_;
  std::shared_mutex mutex_;
};

}  // namespace agent

#endif
