// Log lines about refusals, which clients can cause as often as they like.

#ifndef AGENT_BASE_REFUSALLOG_H
#define AGENT_BASE_REFUSALLOG_H

#include <chrono>
#include <cstddef>
#include <functional>
#include <mutex>
#include <string>

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

  std::mutex mutex_;
  std::chrono::steady_clock::time_point end_;  // of the interval; guarded by mutex_
  std::size_t logged_ = 0;                     // in the interval; guarded by mutex_
  std::size_t unlogged_ = 0;                   // guarded by mutex_
};

}  // namespace agent

#endif
