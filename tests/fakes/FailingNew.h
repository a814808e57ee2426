// Makes operator new fail, counts the blocks that live, and fills new ones with bytes that are not
// zero.
//
// Linking the object library topo_failing_new replaces operator new and delete of the process.
// Switch and count are per thread.

#ifndef TESTS_FAKES_FAILINGNEW_H
#define TESTS_FAKES_FAILINGNEW_H

#include <cstddef>
#include <functional>

namespace fakes {

// While one lives, this thread's allocations fail with std::bad_alloc after the first `spared` ones
// of at least `size` bytes.
class FailingNew {
 public:
  explicit FailingNew(int spared, std::size_t size = 0);
  ~FailingNew();
  FailingNew(const FailingNew&) = delete;
  FailingNew& operator=(const FailingNew&) = delete;

  // How many allocations have failed.
  static int failures();
};

// While one lives, this thread calls a function before its next allocation of at least `size`
// bytes, once. So a test can stop the thread in the middle of what allocates.
class PausingNew {
 public:
  PausingNew(std::function<void()> pause, std::size_t size);
  ~PausingNew();
  PausingNew(const PausingNew&) = delete;
  PausingNew& operator=(const PausingNew&) = delete;

 private:
  std::function<void()> pause_;
};

// Blocks allocated less blocks freed by this thread since it began.
long liveBlocks();

}  // namespace fakes

#endif
