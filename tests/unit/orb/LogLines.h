// The log lines of a server, for expectations of tests.

#ifndef TESTS_UNIT_ORB_LOGLINES_H
#define TESTS_UNIT_ORB_LOGLINES_H

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <string>
#include <vector>

#include "orb/orb.h"
#include "sync/Mutex.h"

namespace orb_tests {

// Thread-safety: any thread. Owns the lines; function() borrows the object. Errors: std::bad_alloc.
class LogLines {
 public:
  orb::LogFunction function() {
    return [this](const std::string& line) {
      const MutexLock lock(mutex_);
      lines_.push_back(line);
      changed_.notify_all();
    };
  }

  std::vector<std::string> all() {
    const MutexLock lock(mutex_);
    return lines_;
  }

  // Waits for a line that contains the text. Returns false after 20 seconds.
  bool await(const std::string& text) {
    MutexLock lock(mutex_);
    return changed_.wait_for(lock.native(), std::chrono::seconds(20), [&]() REQUIRES(mutex_) {
      return std::any_of(lines_.begin(), lines_.end(), [&text](const std::string& line) {
        return line.find(text) != std::string::npos;
      });
    });
  }

  // The number of lines that contain the text.
  std::ptrdiff_t count(const std::string& text) {
    const std::vector<std::string> lines = all();
    return std::count_if(lines.begin(), lines.end(), [&text](const std::string& line) {
      return line.find(text) != std::string::npos;
    });
  }

 private:
  Mutex mutex_;
  std::condition_variable changed_;
  std::vector<std::string> lines_ GUARDED_BY(mutex_);
};

}  // namespace orb_tests

#endif
