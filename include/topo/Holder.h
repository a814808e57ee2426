// Owns the result holder of a domain query.

#ifndef TOPO_HOLDER_H
#define TOPO_HOLDER_H

#include "platform/util/RefImpl.h"

namespace topo {

// Makes a holder with a reference count of 1, and calls Release at the end of the scope.
// Thread-safety: none. Ownership: owns one reference. Errors: the constructor may throw
// std::bad_alloc.
template <typename T>
class Holder {
 public:
  // Plain new: the last Release deletes the holder, in the module or in the platform.
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
