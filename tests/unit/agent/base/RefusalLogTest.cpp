// The rate limit of logged refusals.

#include "agent/base/RefusalLog.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using std::chrono::seconds;

class Refusals : public testing::Test {
 protected:
  std::string loggedBy(const std::string& text) { return loggedBy(log_, text); }

  static std::string loggedBy(agent::RefusalLog& log, const std::string& text) {
    testing::internal::CaptureStderr();
    log.refused(text);
    return testing::internal::GetCapturedStderr();
  }

  std::chrono::steady_clock::time_point now_{std::chrono::hours(1)};
  agent::RefusalLog log_{[this] { return now_; }};
};

TEST_F(Refusals, AreLoggedOnceAMinute) {
  EXPECT_NE(std::string::npos, loggedBy("first").find("first"));
  EXPECT_EQ("", loggedBy("second"));
  now_ += seconds(59);
  EXPECT_EQ("", loggedBy("third"));
  now_ += seconds(1);
  EXPECT_NE(std::string::npos, loggedBy("fourth").find("fourth (and 2 refusals before)"));
}

TEST_F(Refusals, AreCountedSinceTheLastLine) {
  loggedBy("first");
  loggedBy("second");
  now_ += seconds(60);
  loggedBy("third");
  now_ += seconds(60);
  EXPECT_EQ(std::string::npos, loggedBy("fourth").find("before"));
}

TEST_F(Refusals, AreLoggedAsOftenAsTheIntervalAllows) {
  agent::RefusalLog log([this] { return now_; }, 2, seconds(10));
  EXPECT_NE("", loggedBy(log, "first"));
  now_ += seconds(9);
  EXPECT_NE("", loggedBy(log, "second"));
  EXPECT_EQ("", loggedBy(log, "third"));
  now_ += seconds(1);
  EXPECT_NE(std::string::npos, loggedBy(log, "fourth").find("fourth (and 1 refusals before)"));
  EXPECT_NE("", loggedBy(log, "fifth"));
  EXPECT_EQ("", loggedBy(log, "sixth"));
}

TEST_F(Refusals, AreLoggedAtTheGivenLevel) {
  agent::RefusalLog log([this] { return now_; }, 5, seconds(10), agent::kLogTraces);
  EXPECT_EQ("", loggedBy(log, "first"));
  agent::setLogLevel(agent::kLogTraces);
  EXPECT_NE("", loggedBy(log, "second"));
  agent::setLogLevel(agent::kLogErrors);
}

}  // namespace
