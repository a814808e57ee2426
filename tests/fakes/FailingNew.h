// Makes operator new fail, counts allocated blocks, and fills new blocks with bytes other than 0.
//
// An executable that links the object library topo_failing_new has these operators new and delete.
// Failures and counts are per thread.

#ifndef TESTS_FAKES_FAILINGNEW_H
#define TESTS_FAKES_FAILINGNEW_H

#include <cstddef>
#include <functional>

namespace fakes {

// For its scope, on this thread: allocations of at least `size` bytes throw std::bad_alloc, except
// the first `spared` allocations. One object on a thread at a time. Owns nothing.
class FailingNew {
 public:
  explicit FailingNew(int spared, std::size_t size = 0);
  ~FailingNew();
  FailingNew(const FailingNew&) = delete;
  FailingNew& operator=(const FailingNew&) = delete;

  // The number of failed allocations.
  static int failures();
};

// For its scope, on this thread: calls a function once, before the next allocation of at least
// `size` bytes. So a test can stop the thread in the middle of an operation. Exceptions of the
// function pass. Owns the function.
class PausingNew {
 public:
  PausingNew(std::function<void()> pause, std::size_t size);
  ~PausingNew();
  PausingNew(const PausingNew&) = delete;
  PausingNew& operator=(const PausingNew&) = delete;

 private:
  std::function<void()> pause_;
};

// The number of blocks that this thread has allocated minus the number of blocks that it has freed.
long liveBlocks();

}  // namespace fakes

#endif
