// A rate limit for log lines about refused requests.

#ifndef AGENT_BASE_REFUSALLOG_H
#define AGENT_BASE_REFUSALLOG_H

#include <chrono>
#include <cstddef>
#include <functional>
#include <string>

#include "agent/base/Log.h"
#include "sync/Mutex.h"

namespace agent {

// Logs a limited number of refusals in each interval, because clients can cause refusals at any
// rate. The first line of the next interval contains the number of refusals that were not logged.
//
// Thread-safety: any thread. Ownership: owns its counters only. Errors: refused never throws.
class RefusalLog {
 public:
  using Clock = std::function<std::chrono::steady_clock::time_point()>;

  // lines: at least 1.
  explicit RefusalLog(Clock clock, std::size_t lines = 1,
                      std::chrono::seconds interval = std::chrono::minutes(1),
                      int level = kLogErrors);

  // Logs at the level of the constructor. Drops the line when memory is short.
  void refused(const std::string& text) noexcept;

 private:
  void write(const std::string& text);

  const Clock clock_;
  const std::size_t lines_;
  const std::chrono::seconds interval_;
  const int level_;

  Mutex mutex_;
  std::chrono::steady_clock::time_point end_ GUARDED_BY(mutex_);  // of the interval
  std::size_t logged_ GUARDED_BY(mutex_) = 0;                     // in the interval
  std::size_t unlogged_ GUARDED_BY(mutex_) = 0;
};

}  // namespace agent

#endif
