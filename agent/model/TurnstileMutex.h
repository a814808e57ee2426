// A reader-writer mutex that does not let readers starve writers, and its locks.

#ifndef AGENT_MODEL_TURNSTILEMUTEX_H
#define AGENT_MODEL_TURNSTILEMUTEX_H

#include <mutex>
#include <shared_mutex>

#include "sync/ThreadAnnotations.h"

namespace agent {

// Readers pass through a turnstile, which a writer blocks from the start of its wait until its
// unlock. So a writer waits only for the readers that read before the writer came.
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

// Holds a mutex for reading until the end of the scope. Borrows the mutex. Thread-safety: one
// thread. Errors: std::system_error.
class SCOPED_CAPABILITY ReadLock {
 public:
  explicit ReadLock(TurnstileMutex& mutex) ACQUIRES_SHARED(mutex) : mutex_(mutex) {
    mutex_.lock_shared();
  }
  ~ReadLock() RELEASES() { mutex_.unlock_shared(); }

  ReadLock(const ReadLock&) = delete;
  ReadLock& operator=(const ReadLock&) = delete;

 private:
  TurnstileMutex& mutex_;
};

// Holds a mutex for writing until the end of the scope. Borrows the mutex. Thread-safety: one
// thread. Errors: std::system_error.
class SCOPED_CAPABILITY WriteLock {
 public:
  explicit WriteLock(TurnstileMutex& mutex) ACQUIRES(mutex) : mutex_(mutex) { mutex_.lock(); }
  ~WriteLock() RELEASES() { mutex_.unlock(); }

  WriteLock(const WriteLock&) = delete;
  WriteLock& operator=(const WriteLock&) = delete;

 private:
  TurnstileMutex& mutex_;
};

}  // namespace agent

#endif
