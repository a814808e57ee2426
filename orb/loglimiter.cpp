#include "loglimiter.h"

#include <memory>
#include <utility>

namespace orb {

LogLimiter::LogLimiter(LogFunction log, Clock clock)
    : log_(std::move(log)), clock_(std::move(clock)) {}

LogLimiter::~LogLimiter() {
  writeSummary();
}

void LogLimiter::write(const std::string& line) {
  const Time now = clock_();
  const MutexLock lock(mutex_);
  if (lines_ > 0 && now >= begin_ + kPeriod) {
    writeSummary();
    lines_ = 0;
  }
  if (lines_ == 0) {
    begin_ = now;
  }
  ++lines_;
  if (lines_ <= kLines) {
    log_(line);
  } else if (lines_ == kLines + 1) {
    log_("the ORB logs more than " + std::to_string(kLines) + " lines in " +
         std::to_string(kPeriod.count()) + " s: further ones are left out");
  }
}

void LogLimiter::writeSummary() {
  if (lines_ > kLines) {
    log_(std::to_string(lines_ - kLines) + " lines of the ORB were left out");
  }
}

LogFunction limited(const LogFunction& log) {
  if (!log) {
    return nullptr;
  }
  const auto limiter =
      std::make_shared<LogLimiter>(log, [] { return std::chrono::steady_clock::now(); });
  return [limiter](const std::string& line) { limiter->write(line); };
}

}  // namespace orb
