// Rate limit for the lines that an ORB logs.

#ifndef ORB_LOGLIMITER_H
#define ORB_LOGLIMITER_H

#include <chrono>
#include <cstddef>
#include <functional>
#include <mutex>
#include <string>

#include "orb/orb.h"

namespace orb {

// Forwards at most kLines lines per period to a log function. In place of the first dropped line of
// a period a notice is written. The number of dropped lines is written before the first line of a
// later period, or by the destructor. A period begins with the first line after the end of the
// previous period.
//
// Thread-safety: any thread. The log function is called by one thread at a time, under the mutex.
// An exception of the log function passes.
class LogLimiter {
 public:
  using Time = std::chrono::steady_clock::time_point;
  using Clock = std::function<Time()>;

  static constexpr std::size_t kLines = 20;
  static constexpr std::chrono::seconds kPeriod{10};

  // REQUIRES: neither function is null.
  LogLimiter(LogFunction log, Clock clock);
  ~LogLimiter();
  LogLimiter(const LogLimiter&) = delete;
  LogLimiter& operator=(const LogLimiter&) = delete;

  void write(const std::string& line);

 private:
  void writeSummary();

  const LogFunction log_;
  const Clock clock_;
  std::mutex mutex_;
  Time begin_;             // of the current period; guarded by mutex_
  std::size_t lines_ = 0;  // of the current period, dropped lines included; guarded by mutex_
};

// Returns a log function that writes through a LogLimiter; null for null.
LogFunction limited(const LogFunction& log);

}  // namespace orb

#endif
