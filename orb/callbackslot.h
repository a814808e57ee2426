// A callback of a server that can be replaced while requests use it.

#ifndef ORB_CALLBACKSLOT_H
#define ORB_CALLBACKSLOT_H

#include <utility>

#include "sync/SharedMutex.h"

namespace orb {

// Thread-safety: any thread; uses of the callback run at the same time. Owns the callback, a
// std::function. Errors: exceptions of the use pass.
template <typename Callback>
class CallbackSlot {
 public:
  // Replaces the callback; null removes the callback. Returns when no use of the former callback is
  // running.
  void set(Callback callback) {
    const WriteLock lock(mutex_);
    callback_ = std::move(callback);
  }

  // Calls `use` with the callback, if there is one.
  template <typename Use>
  void with(Use use) const {
    const ReadLock lock(mutex_);
    if (callback_) {
      use(callback_);
    }
  }

 private:
  mutable SharedMutex mutex_;
  Callback callback_ GUARDED_BY(mutex_);
};

}  // namespace orb

#endif
