// Makes ACE's lock of static objects fail.

#ifndef FAKES_STATICOBJECTLOCK_H
#define FAKES_STATICOBJECTLOCK_H

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

}  // namespace fakes

#endif
