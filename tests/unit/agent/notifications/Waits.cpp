#include "tests/unit/agent/notifications/Waits.h"

#include <utility>

namespace notification_tests {

Waits::Waits(std::chrono::milliseconds longestShort, std::function<void()> hook)
    : longestShort_(longestShort), hook_(std::move(hook)) {}

agent::Receiver::Wait Waits::function() {
  return [this](std::condition_variable& changed, std::unique_lock<std::mutex>& lock,
                std::chrono::milliseconds longest, const std::function<bool()>& condition) {
    return wait(changed, lock, longest, condition);
  };
}

Waits::Lengths Waits::begun() {
  const std::lock_guard<std::mutex> lock(mutex_);
  return begun_;
}

int Waits::present() {
  const std::lock_guard<std::mutex> lock(mutex_);
  return present_;
}

bool Waits::wait(std::condition_variable& changed, std::unique_lock<std::mutex>& lock,
                 std::chrono::milliseconds longest, const std::function<bool()>& condition) {
  if (condition()) {
    return true;
  }
  begin(longest);
  if (hook_) {
    hook_();
  }
  if (longest > longestShort_) {
    changed.wait_for(lock, longest, condition);
  } else {
    lock.unlock();
    lock.lock();
  }
  end();
  return condition();
}

void Waits::begin(std::chrono::milliseconds longest) {
  const std::lock_guard<std::mutex> lock(mutex_);
  begun_.push_back(longest);
  ++present_;
}

void Waits::end() {
  const std::lock_guard<std::mutex> lock(mutex_);
  --present_;
}

}  // namespace notification_tests
