// A reader-writer mutex that does not let readers starve writers. ReadLock and WriteLock of sync/
// lock the mutex.

#ifndef AGENT_MODEL_TURNSTILEMUTEX_H
#define AGENT_MODEL_TURNSTILEMUTEX_H

#include <mutex>
#include <shared_mutex>

#include "sync/SharedMutex.h"

namespace agent {

// Readers pass through a turnstile, which a writer blocks from the start of its wait until its
// unlock. So a writer waits only for read locks that are older than its wait.
//
// Thread-safety: any thread. Not recursive: a thread that reads must not lock again, because a
// waiting writer would block the second lock for ever. Ownership: the locks borrow the mutex.
// Errors: std::system_error.
class CAPABILITY("mutex") TurnstileMutex {
 public:
  void lock() ACQUIRES() {
    turnstile_.lock();
    mutex_.lock();
  }

  void unlock() RELEASES() {
    mutex_.unlock();
    turnstile_.unlock();
  }

  void lock_shared() ACQUIRES_SHARED() {
    const std::lock_guard<std::mutex> passage(turnstile_);
    mutex_.lock_shared();
  }

  void unlock_shared() RELEASES_SHARED() { mutex_.unlock_shared(); }

 private:
  std::mutex turnstile_;
  std::shared_mutex mutex_;
};

}  // namespace agent

#endif
