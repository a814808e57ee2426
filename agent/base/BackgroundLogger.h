// Loggers that give each line to a function; one of them from a thread of its own.

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

// Writes each line before log returns, one at a time.
std::unique_ptr<spdlog::logger> makeDirectLogger(const WriteLine& write);

// Writes lines from a thread of its own, so that logging never waits for a line to be written. When
// too many lines wait, each new one displaces the oldest; before the next line that is written
// stands one that says how many were dropped.
//
// Thread-safety: any thread.
class BackgroundLogger {
 public:
  BackgroundLogger(const WriteLine& write, std::size_t mostWaiting);

  // Waits until the lines that wait are written, for as long as that takes.
  ~BackgroundLogger();

  BackgroundLogger(const BackgroundLogger&) = delete;
  BackgroundLogger& operator=(const BackgroundLogger&) = delete;

  spdlog::logger& logger() { return *logger_; }

  // Waits until every line logged before is written or dropped; false when that takes too long.
  bool flush(std::chrono::milliseconds patience);

 private:
  class Sink;

  std::shared_ptr<spdlog::details::thread_pool> thread_;
  std::shared_ptr<Sink> sink_;
  std::shared_ptr<spdlog::logger> logger_;
};

}  // namespace agent

#endif
