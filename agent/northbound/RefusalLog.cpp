#include "agent/northbound/RefusalLog.h"

#include <utility>

#include "agent/northbound/Log.h"

namespace agent {
namespace {

constexpr std::chrono::minutes kInterval{1};

}  // namespace

void RefusalLog::refused(const std::string& text) noexcept {
  try {
    write(text);
  } catch (...) {
    return;  // there is no memory for the line
  }
}

void RefusalLog::write(const std::string& text) {
  std::size_t unlogged = 0;
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    const auto now = clock_();
    if (now < next_) {
      ++unlogged_;
      return;
    }
    next_ = now + kInterval;
    unlogged = std::exchange(unlogged_, 0);
  }
  log(kLogErrors,
      text + (unlogged == 0 ? "" : " (and " + std::to_string(unlogged) + " refusals before)"));
}

}  // namespace agent
