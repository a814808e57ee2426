// The reference-counted holder that a domain query fills with its result.

#ifndef PLATFORM_UTIL_REFIMPL_H
#define PLATFORM_UTIL_REFIMPL_H

#include <atomic>
#include <cstdint>

namespace NS_UTIL {

// A value with a reference count, which starts at 1. The Release that brings the count to 0 deletes
// the holder, in the module or in the host.
//
// Thread-safety: AddRef and Release may be called on any thread; the value has no guard of its own.
// Ownership: shared; every owner calls Release once. Errors: AddRef and Release never fail.
template <typename T>
class REF_Impl {
 public:
  REF_Impl() = default;
  REF_Impl(const REF_Impl&) = delete;
  REF_Impl& operator=(const REF_Impl&) = delete;

  T& Value() { return value_; }

  void AddRef() { count_.fetch_add(1, std::memory_order_relaxed); }

  void Release() {
    if (count_.fetch_sub(1, std::memory_order_acq_rel) == 1) {
      delete this;
    }
  }

 private:
  ~REF_Impl() = default;

  T value_{};
  std::atomic<std::int64_t> count_{1};
};

}  // namespace NS_UTIL

#endif
