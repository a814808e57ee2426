// Traces the beginning and the end of a servant's life.

#ifndef TOPOSVC_REFCOUNT_H
#define TOPOSVC_REFCOUNT_H

#include "topo/Log.h"

namespace NS_CORBA {

// A servant with two log lines added. The counting is the servant base's own.
template <typename Servant>
class RefCount : public Servant {
 public:
  RefCount() { topo::logText(kMadeSite, kLogTrace, "[ RefCount]  ref_count!"); }

 protected:
  // Reached through the servant's reference count alone.
  ~RefCount() override {
    topo::logTextQuietly(kDestroyedSite, kLogTrace,
                         "[ ~RefCount]  Reference count associated object destroyed!");
  }

 private:
  static constexpr topo::LogSite kMadeSite{"toposvc", 33};
  static constexpr topo::LogSite kDestroyedSite{"toposvc", 39};
};

}  // namespace NS_CORBA

#endif
