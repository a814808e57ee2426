// Log lines about refusals, which clients can cause as often as they like.

#ifndef AGENT_BASE_REFUSALLOG_H
#define AGENT_BASE_REFUSALLOG_H

#include <chrono>
#include <cstddef>
#include <functional>
#include <string>

#include "sync/Mutex.h"

namespace agent {

// Logs a limited number of refusals in an interval, and with the next one the number of those
// before it that were not logged.
//
// Thread-safety: any thread.
class RefusalLog {
 public:
  using Clock = std::function<std::chrono::steady_clock::time_point()>;

  // One refusal a minute unless told otherwise; one line at least.
  explicit RefusalLog(Clock clock, std::size_t lines = 1,
                      std::chrono::seconds interval = std::chrono::minutes(1));

  // At level 1. Drops the line when there is no memory for it.
  void refused(const std::string& text) noexcept;

 private:
  void write(const std::string& text);

  const Clock clock_;
  const std::size_t lines_;
  const std::chrono::seconds interval_;

  Mutex mutex_;
  std::chrono::steady_clock::time_point end_ GUARDED_BY(mutex_);  // of the interval
  std::size_t logged_ GUARDED_BY(mutex_) = 0;                     // in the interval
  std::size_t unlogged_ GUARDED_BY(mutex_) = 0;
};

}  // namespace agent

#endif
