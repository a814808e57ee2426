// Rate limit for the lines that an ORB logs.

#ifndef ORB_LOGLIMITER_H
#define ORB_LOGLIMITER_H

#include <chrono>
#include <cstddef>
#include <functional>
#include <string>

#include "orb/orb.h"
#include "sync/Mutex.h"

namespace orb {

// Forwards at most kLines lines per period to a log function. In place of the first dropped line of
// a period a notice is written. The number of dropped lines is written before the first line of a
// later period, or by the destructor. A period begins with the first line after the end of the
// previous period.
//
// Thread-safety: any thread. The log function is called by one thread at a time, under the mutex.
// Owns its functions. An exception of the log function passes.
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
  void writeSummary() REQUIRES(mutex_);

  const LogFunction log_;
  const Clock clock_;
  Mutex mutex_;
  // Of the current period; lines_ includes dropped lines.
  Time begin_ GUARDED_BY(mutex_);
  std::size_t lines_ GUARDED_BY(mutex_) = 0;
};

// Returns a log function that writes through a LogLimiter; null for null.
LogFunction limited(const LogFunction& log);

}  // namespace orb

#endif
