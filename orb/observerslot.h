// The observer of the requests of a server.

#ifndef ORB_OBSERVERSLOT_H
#define ORB_OBSERVERSLOT_H

#include <utility>

#include "orb/orb.h"
#include "sync/SharedMutex.h"

namespace orb {

// Thread-safety: any thread; observers run at the same time. Owns the observer.
// Errors: exceptions of makeTarget pass.
class ObserverSlot {
 public:
  // Replaces the observer; null removes the observer. Returns when no call of the former observer
  // is running.
  void set(RequestObserver observer) {
    const WriteLock lock(mutex_);
    observer_ = std::move(observer);
  }

  // Calls the observer, if there is one, with the result of makeTarget.
  template <typename MakeTarget>
  void notify(MakeTarget makeTarget) const {
    const ReadLock lock(mutex_);
    if (observer_) {
      observer_(makeTarget());
    }
  }

 private:
  mutable SharedMutex mutex_;
  RequestObserver observer_ GUARDED_BY(mutex_);
};

}  // namespace orb

#endif
