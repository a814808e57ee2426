// A mutex and its lock with annotations for clang's thread-safety analysis. Those of the standard
// library have none.
//
//   Mutex mutex_;
//   std::condition_variable changed_;
//   bool done_ GUARDED_BY(mutex_) = false;
//
//   MutexLock lock(mutex_);
//   changed_.wait(lock.native(), [this]() REQUIRES(mutex_) { return done_; });

#ifndef SYNC_MUTEX_H
#define SYNC_MUTEX_H

#include <mutex>

#include "sync/ThreadAnnotations.h"

// A mutex that is not recursive.
//
// Thread-safety: any thread.
// Ownership: owns the native mutex; outlives its locks.
// Errors: throws nothing but std::system_error of a failed lock.
class CAPABILITY("mutex") Mutex {
 public:
  Mutex() = default;
  Mutex(const Mutex&) = delete;
  Mutex& operator=(const Mutex&) = delete;

  // Has an effect on the analysis only. For functions of an object whose constructor has locked the
  // mutex. REQUIRES: the thread holds the mutex.
  void assertHeld() const ASSERTS_HELD() {}

 private:
  friend class MutexLock;

  std::mutex native_;
};

// Locks a mutex until the end of its scope. unlock() and lock() interrupt the lock.
//
// Thread-safety: one thread.
// Ownership: borrows the mutex.
// Errors: throws nothing but std::system_error of a failed lock.
class SCOPED_CAPABILITY MutexLock {
 public:
  explicit MutexLock(Mutex& mutex) ACQUIRES(mutex) : lock_(mutex.native_) {}
  ~MutexLock() RELEASES() = default;

  MutexLock(const MutexLock&) = delete;
  MutexLock& operator=(const MutexLock&) = delete;

  // REQUIRES: the mutex is not locked.
  void lock() ACQUIRES() { lock_.lock(); }

  // REQUIRES: the mutex is locked.
  void unlock() RELEASES() { lock_.unlock(); }

  // For std::condition_variable, whose waits return with the mutex locked.
  std::unique_lock<std::mutex>& native() { return lock_; }

 private:
  std::unique_lock<std::mutex> lock_;
};

#endif
