// Logs the construction and the destruction of a servant.

#ifndef TOPOSVC_REFCOUNT_H
#define TOPOSVC_REFCOUNT_H

#include "topo/Log.h"

namespace NS_CORBA {

// A servant class with two log lines. The servant base counts the references.
// Thread-safety, ownership and errors: those of Servant.
template <typename Servant>
class RefCount : public Servant {
 public:
  RefCount() { topo::logText(kMadeSite, kLogTrace, "[ RefCount]  ref_count!"); }

 protected:
  // Called by the last _remove_ref.
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
