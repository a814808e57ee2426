// Makes the non-throwing operator new fail.
//
// An executable that links the object library topo_failing_nothrow_new has this
// operator new(size, nothrow). Failures are per thread.

#ifndef TESTS_FAKES_FAILINGNOTHROWNEW_H
#define TESTS_FAKES_FAILINGNOTHROWNEW_H

#include <cstddef>

namespace fakes {

// For its scope, on this thread: non-throwing allocations of `first` to `last` bytes return null.
// One object on a thread at a time. Owns nothing.
class FailingNothrowNew {
 public:
  FailingNothrowNew(std::size_t first, std::size_t last);
  ~FailingNothrowNew();
  FailingNothrowNew(const FailingNothrowNew&) = delete;
  FailingNothrowNew& operator=(const FailingNothrowNew&) = delete;

  // The number of failed allocations.
  static int failures();
};

}  // namespace fakes

#endif
