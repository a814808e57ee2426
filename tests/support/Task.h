// Work on a thread of its own, of which a test can tell whether it waits.

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

// Whether a thread of this process sleeps in the kernel, so that it waits for something: a lock, a
// condition, input. False for a thread that has ended.
inline bool isAsleep(pid_t thread) {
  std::ifstream file("/proc/self/task/" + std::to_string(thread) + "/stat");
  const std::string text{std::istreambuf_iterator<char>(file), {}};
  const std::size_t name = text.rfind(") ");  // the thread's name may hold anything
  return name != std::string::npos && text.compare(name + 2, 1, "S") == 0;
}

// A function that runs on a thread of its own. The destructor waits for its end.
//
// Thread-safety: none.
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

  // Whether the function waits for something, in place of having ended. Returns as soon as it does
  // one or the other, so that no time has to be guessed.
  bool waits() {
    while (!isAsleep(thread_)) {
      if (result_.wait_for(std::chrono::seconds(0)) == std::future_status::ready) {
        return false;
      }
      std::this_thread::yield();
    }
    return true;
  }

  // What the function returns or throws, once it has ended.
  std::invoke_result_t<Function> get() { return result_.get(); }

 private:
  std::future<std::invoke_result_t<Function>> result_;
  pid_t thread_ = 0;
};

}  // namespace support

#endif
