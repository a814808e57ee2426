// The reference-counted holder into which a domain query writes its result.

#ifndef PLATFORM_UTIL_REFIMPL_H
#define PLATFORM_UTIL_REFIMPL_H

#include <atomic>
#include <cstdint>

namespace NS_UTIL {

// A value with a count. The maker starts with a count of one; the release that brings the count to
// zero destroys the holder, on whichever side of the module boundary it happens.
//
// Thread-safety: AddRef and Release from any thread; the value is not guarded.
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
