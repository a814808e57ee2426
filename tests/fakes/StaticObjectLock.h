// ACE's lock of static objects: lets a test make the lock fail, and see a blocked thread.

#ifndef TESTS_FAKES_STATICOBJECTLOCK_H
#define TESTS_FAKES_STATICOBJECTLOCK_H

namespace fakes {

// Locks the lock for its scope, so that a second lock on the constructing thread fails, although
// the lock is normally recursive. Only one object may exist at a time. Owns the lock.
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
