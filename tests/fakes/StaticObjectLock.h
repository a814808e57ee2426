// ACE's lock of static objects: lets a test make the lock fail, and see a blocked thread.

#ifndef TESTS_FAKES_STATICOBJECTLOCK_H
#define TESTS_FAKES_STATICOBJECTLOCK_H

namespace fakes {

// For its scope: the constructing thread has the lock, and a second lock on this thread fails
// (normally the lock is recursive). Only one object may exist at a time. Owns the lock.
class FailingStaticObjectLock {
 public:
  FailingStaticObjectLock();
  ~FailingStaticObjectLock();
  FailingStaticObjectLock(const FailingStaticObjectLock&) = delete;
  FailingStaticObjectLock& operator=(const FailingStaticObjectLock&) = delete;
};

// Whether a thread waits for the lock.
bool staticObjectLockIsWaitedFor();

}  // namespace fakes

#endif
