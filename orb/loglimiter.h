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

// Passes at most kLines lines of each period on. The first line that is left out is replaced with a
// notice; the number of lines that were left out precedes the first line of a later period, or is
// written by the destructor. A period begins with a line that follows the end of the last one.
//
// Thread-safety: any thread. The log function is called by one thread at a time.
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
  Time begin_;             // of the period; guarded by mutex_
  std::size_t lines_ = 0;  // of the period, left out or not; guarded by mutex_
};

// A log function with a LogLimiter before it; null for null.
LogFunction limited(const LogFunction& log);

}  // namespace orb

#endif
