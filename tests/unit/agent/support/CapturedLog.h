// The log of the agent at a level, during the life of the object.

#ifndef TESTS_UNIT_AGENT_SUPPORT_CAPTUREDLOG_H
#define TESTS_UNIT_AGENT_SUPPORT_CAPTUREDLOG_H

#include <gtest/gtest.h>

#include <string>

#include "agent/base/Log.h"

namespace support {

// Captures standard error. REQUIRES: one object at a time, and a log without a background thread.
class CapturedLog {
 public:
  explicit CapturedLog(int level) {
    agent::setLogLevel(level);
    testing::internal::CaptureStderr();
  }
  ~CapturedLog() {
    text();
    agent::setLogLevel(agent::kLogErrors);
  }
  CapturedLog(const CapturedLog&) = delete;
  CapturedLog& operator=(const CapturedLog&) = delete;

  // Ends the capture and returns the captured lines.
  std::string text() {
    if (isCapturing_) {
      isCapturing_ = false;
      text_ = testing::internal::GetCapturedStderr();
    }
    return text_;
  }

 private:
  bool isCapturing_ = true;
  std::string text_;
};

}  // namespace support

#endif
