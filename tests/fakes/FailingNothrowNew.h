// Makes the non-throwing operator new fail.
//
// Linking the object library topo_failing_nothrow_new replaces operator new(size, nothrow) of the
// process. The switch is per thread.

#ifndef TESTS_FAKES_FAILINGNOTHROWNEW_H
#define TESTS_FAKES_FAILINGNOTHROWNEW_H

#include <cstddef>

namespace fakes {

// While one lives, this thread's non-throwing allocations of first to last bytes give null.
class FailingNothrowNew {
 public:
  FailingNothrowNew(std::size_t first, std::size_t last);
  ~FailingNothrowNew();
  FailingNothrowNew(const FailingNothrowNew&) = delete;
  FailingNothrowNew& operator=(const FailingNothrowNew&) = delete;

  // How many allocations have failed.
  static int failures();
};

}  // namespace fakes

#endif
