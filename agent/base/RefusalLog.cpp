#include "agent/base/RefusalLog.h"

#include <utility>

namespace agent {

RefusalLog::RefusalLog(Clock clock, std::size_t lines, std::chrono::seconds interval, int level)
    : clock_(std::move(clock)), lines_(lines), interval_(interval), level_(level) {}

void RefusalLog::refused(const std::string& text) noexcept {
  try {
    write(text);
  } catch (...) {
    return;  // no memory for the line
  }
}

void RefusalLog::write(const std::string& text) {
  std::size_t unlogged = 0;
  {
    const MutexLock lock(mutex_);
    const auto now = clock_();
    if (now >= end_) {
      end_ = now + interval_;
      logged_ = 0;
    }
    if (logged_ == lines_) {
      ++unlogged_;
      return;
    }
    ++logged_;
    unlogged = std::exchange(unlogged_, 0);
  }
  log(level_,
      text + (unlogged == 0 ? "" : " (and " + std::to_string(unlogged) + " refusals before)"));
}

}  // namespace agent
