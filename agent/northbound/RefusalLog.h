// Log lines about refusals, which clients can cause as often as they like.

#ifndef AGENT_NORTHBOUND_REFUSALLOG_H
#define AGENT_NORTHBOUND_REFUSALLOG_H

#include <chrono>
#include <cstddef>
#include <functional>
#include <mutex>
#include <string>

namespace agent {

// Logs one refusal a minute at most, with the number of those before it that were not logged.
//
// Thread-safety: any thread.
class RefusalLog {
 public:
  using Clock = std::function<std::chrono::steady_clock::time_point()>;

  explicit RefusalLog(Clock clock) : clock_(std::move(clock)) {}

  // At level 1. Drops the line when there is no memory for it.
  void refused(const std::string& text) noexcept;

 private:
  void write(const std::string& text);

  const Clock clock_;

  std::mutex mutex_;
  std::chrono::steady_clock::time_point next_;  // guarded by mutex_
  std::size_t unlogged_ = 0;                    // guarded by mutex_
};

}  // namespace agent

#endif
