// A mutex and its lock that clang's thread-safety analysis understands. The standard library's own
// have no annotations.
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

// Thread-safety: any thread. Not recursive.
class CAPABILITY("mutex") Mutex {
 public:
  Mutex() = default;
  Mutex(const Mutex&) = delete;
  Mutex& operator=(const Mutex&) = delete;

  // For the analysis alone, in a function whose object has locked the mutex in its constructor.
  // REQUIRES: the thread holds the mutex.
  void assertHeld() const ASSERTS_HELD() {}

 private:
  friend class MutexLock;

  std::mutex native_;
};

// Holds a mutex until the end of its scope. May release the mutex and take the mutex again in
// between. Borrows the mutex. Thread-safety: one thread.
class SCOPED_CAPABILITY MutexLock {
 public:
  explicit MutexLock(Mutex& mutex) ACQUIRES(mutex) : lock_(mutex.native_) {}
  ~MutexLock() RELEASES() = default;

  MutexLock(const MutexLock&) = delete;
  MutexLock& operator=(const MutexLock&) = delete;

  // REQUIRES: the mutex is not held.
  void lock() ACQUIRES() { lock_.lock(); }

  // REQUIRES: the mutex is held.
  void unlock() RELEASES() { lock_.unlock(); }

  // For std::condition_variable, which holds the mutex again whenever it returns.
  std::unique_lock<std::mutex>& native() { return lock_; }

 private:
  std::unique_lock<std::mutex> lock_;
};

#endif
