// ACE's lock of static objects: how it fails, and who waits for it.

#ifndef TESTS_FAKES_STATICOBJECTLOCK_H
#define TESTS_FAKES_STATICOBJECTLOCK_H

namespace fakes {

// While one lives, the thread that made it holds the lock and cannot take it once more, as it
// otherwise could. For one thread at a time.
class FailingStaticObjectLock {
 public:
  FailingStaticObjectLock();
  ~FailingStaticObjectLock();
  FailingStaticObjectLock(const FailingStaticObjectLock&) = delete;
  FailingStaticObjectLock& operator=(const FailingStaticObjectLock&) = delete;
};

// Whether a thread is blocked at the lock.
bool staticObjectLockIsWaitedFor();

}  // namespace fakes

#endif
