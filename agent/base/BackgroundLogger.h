// Loggers that pass each line to a function, on the calling thread or on the thread of the logger.

#ifndef AGENT_BASE_BACKGROUNDLOGGER_H
#define AGENT_BASE_BACKGROUNDLOGGER_H

#include <spdlog/logger.h>

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <string_view>

namespace spdlog::details {
class thread_pool;
}

namespace agent {

// Writes a whole line, line feed included. May block; must not throw.
using WriteLine = std::function<void(std::string_view)>;

// A logger that writes each line before log returns, one line at a time.
std::unique_ptr<spdlog::logger> makeDirectLogger(const WriteLine& write);

// Writes lines on a separate thread, so that logging never waits for a write. In a full queue each
// new line evicts the oldest line; the number of evicted lines is logged before the next line.
//
// Thread-safety: any thread. Ownership: owns the queue, the thread and the logger. Errors: a
// line is dropped when memory is short.
class BackgroundLogger {
 public:
  BackgroundLogger(const WriteLine& write, std::size_t mostWaiting);

  // Waits without a timeout until the queued lines are written.
  ~BackgroundLogger();

  BackgroundLogger(const BackgroundLogger&) = delete;
  BackgroundLogger& operator=(const BackgroundLogger&) = delete;

  spdlog::logger& logger() { return *logger_; }

  // Waits until every line logged before is written or dropped. Returns false after the timeout.
  bool flush(std::chrono::milliseconds patience);

 private:
  class Sink;

  std::shared_ptr<spdlog::details::thread_pool> thread_;
  std::shared_ptr<Sink> sink_;
  std::shared_ptr<spdlog::logger> logger_;
};

}  // namespace agent

#endif
