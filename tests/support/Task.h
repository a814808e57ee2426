// Runs a function on a new thread, and detects that the thread waits.

#ifndef TESTS_SUPPORT_TASK_H
#define TESTS_SUPPORT_TASK_H

#include <sys/types.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <future>
#include <iterator>
#include <string>
#include <thread>
#include <type_traits>
#include <utility>

namespace support {

// Whether a thread of this process sleeps in the kernel: waits for a lock, a condition or input.
// False for an ended thread.
inline bool isAsleep(pid_t thread) {
  std::ifstream file("/proc/self/task/" + std::to_string(thread) + "/stat");
  const std::string text{std::istreambuf_iterator<char>(file), {}};
  const std::size_t name = text.rfind(") ");  // the name of the thread may contain ") "
  return name != std::string::npos && text.compare(name + 2, 1, "S") == 0;
}

// Runs a function on a new thread. The destructor waits for the end of the function.
// Thread-safety: none. Owns the thread and the function. Errors: see get().
template <typename Function>
class Task {
 public:
  explicit Task(Function function) {
    std::promise<pid_t> thread;
    result_ = std::async(std::launch::async, [&thread, work = std::move(function)]() mutable {
      thread.set_value(gettid());
      return work();
    });
    thread_ = thread.get_future().get();
  }

  // Blocks until the function waits (returns true) or has ended (returns false).
  bool waits() {
    while (!isAsleep(thread_)) {
      if (result_.wait_for(std::chrono::seconds(0)) == std::future_status::ready) {
        return false;
      }
      std::this_thread::yield();
    }
    return true;
  }

  // Waits for the end of the function. Returns its result or throws its exception.
  std::invoke_result_t<Function> get() { return result_.get(); }

 private:
  std::future<std::invoke_result_t<Function>> result_;
  pid_t thread_ = 0;
};

}  // namespace support

#endif
