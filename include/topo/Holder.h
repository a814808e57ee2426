// Ownership of a domain query's result holder.

#ifndef TOPO_HOLDER_H
#define TOPO_HOLDER_H

#include "platform/util/RefImpl.h"

namespace topo {

// Makes a holder with a count of one and releases it at the end of the scope, on every path.
template <typename T>
class Holder {
 public:
  // The holder destroys itself with its last release, which may be the platform's.
  Holder() : holder_(new NS_UTIL::REF_Impl<T>) {}
  ~Holder() { holder_->Release(); }

  Holder(const Holder&) = delete;
  Holder& operator=(const Holder&) = delete;

  NS_UTIL::REF_Impl<T>* get() { return holder_; }
  T& operator*() { return holder_->Value(); }
  T* operator->() { return &holder_->Value(); }

 private:
  NS_UTIL::REF_Impl<T>* const holder_;
};

}  // namespace topo

#endif
