#include "tests/fakes/FailingNothrowNew.h"

#include <new>

namespace {

// Initially an empty range.
thread_local std::size_t firstFailing = 1;
thread_local std::size_t lastFailing = 0;
thread_local int failureCount = 0;

}  // namespace

namespace fakes {

FailingNothrowNew::FailingNothrowNew(std::size_t first, std::size_t last) {
  failureCount = 0;
  firstFailing = first;
  lastFailing = last;
}

FailingNothrowNew::~FailingNothrowNew() {
  firstFailing = 1;
  lastFailing = 0;
}

int FailingNothrowNew::failures() {
  return failureCount;
}

}  // namespace fakes

// Calls the throwing form, so that a memory checker sees the allocation.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  if (size >= firstFailing && size <= lastFailing) {
    ++failureCount;
    return nullptr;
  }
  try {
    return ::operator new(size);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}
