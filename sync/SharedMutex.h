// A reader-writer mutex and the locks of reader-writer mutexes that clang's thread-safety analysis
// understands.
//
//   SharedMutex mutex_;
//   int value_ GUARDED_BY(mutex_) = 0;
//
//   const ReadLock lock(mutex_);   // value_ can be read
//   const WriteLock lock(mutex_);  // value_ can be written

#ifndef SYNC_SHAREDMUTEX_H
#define SYNC_SHAREDMUTEX_H

#include <shared_mutex>

#include "sync/ThreadAnnotations.h"

// Thread-safety: any thread. Not recursive. Owns nothing. Errors: std::system_error.
class CAPABILITY("mutex") SharedMutex {
 public:
  SharedMutex() = default;
  SharedMutex(const SharedMutex&) = delete;
  SharedMutex& operator=(const SharedMutex&) = delete;

  void lock() ACQUIRES() { native_.lock(); }
  void unlock() RELEASES() { native_.unlock(); }
  void lock_shared() ACQUIRES_SHARED() { native_.lock_shared(); }
  void unlock_shared() RELEASES_SHARED() { native_.unlock_shared(); }

 private:
  std::shared_mutex native_;
};

// Locks a mutex with the functions of SharedMutex for reading until the end of the scope. Borrows
// the mutex. Thread-safety: one thread. Errors: those of the mutex.
template <typename AnyMutex>
class SCOPED_CAPABILITY ReadLock {
 public:
  explicit ReadLock(AnyMutex& mutex) ACQUIRES_SHARED(mutex) : mutex_(mutex) {
    mutex_.lock_shared();
  }
  ~ReadLock() RELEASES() { mutex_.unlock_shared(); }

  ReadLock(const ReadLock&) = delete;
  ReadLock& operator=(const ReadLock&) = delete;

 private:
  AnyMutex& mutex_;
};

// Locks a mutex with the functions of SharedMutex for writing until the end of the scope. Borrows
// the mutex. Thread-safety: one thread. Errors: those of the mutex.
template <typename AnyMutex>
class SCOPED_CAPABILITY WriteLock {
 public:
  explicit WriteLock(AnyMutex& mutex) ACQUIRES(mutex) : mutex_(mutex) { mutex_.lock(); }
  ~WriteLock() RELEASES() { mutex_.unlock(); }

  WriteLock(const WriteLock&) = delete;
  WriteLock& operator=(const WriteLock&) = delete;

 private:
  AnyMutex& mutex_;
};

#endif
