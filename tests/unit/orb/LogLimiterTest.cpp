// The rate limit of the ORB's lines in the log.

#include "orb/loglimiter.h"

#include <gmock/gmock.h>

#include <optional>
#include <vector>

namespace {

using orb::LogLimiter;
using testing::ElementsAre;
using testing::SizeIs;

class LogLimiterTest : public testing::Test {
 protected:
  void write(std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
      limiter_->write("line");
    }
  }

  std::vector<std::string> takeLines() { return std::exchange(lines_, {}); }

  std::vector<std::string> lines_;
  LogLimiter::Time now_;
  std::optional<LogLimiter> limiter_{std::in_place,
                                     [this](const std::string& line) { lines_.push_back(line); },
                                     [this] { return now_; }};
};

const char* const kNotice = "the ORB logs more than 20 lines in 10 s: further ones are left out";

TEST_F(LogLimiterTest, ForwardsLinesUpToTheLimit) {
  write(20);
  EXPECT_EQ(std::vector<std::string>(20, "line"), takeLines());
}

TEST_F(LogLimiterTest, ReplacesFurtherLinesWithOneNotice) {
  write(20);
  takeLines();
  write(100000);
  EXPECT_THAT(takeLines(), ElementsAre(kNotice));
}

TEST_F(LogLimiterTest, WritesTheNumberOfDroppedLinesInTheNextPeriod) {
  write(25);
  takeLines();
  now_ += LogLimiter::kPeriod - std::chrono::nanoseconds(1);
  write(1);
  EXPECT_THAT(takeLines(), SizeIs(0));
  now_ += std::chrono::nanoseconds(1);
  write(1);
  EXPECT_THAT(takeLines(), ElementsAre("6 lines of the ORB were left out", "line"));
  write(19);
  EXPECT_THAT(takeLines(), SizeIs(19));
  write(1);
  EXPECT_THAT(takeLines(), ElementsAre(kNotice));
}

TEST_F(LogLimiterTest, BeginsAPeriodWithTheFirstLine) {
  write(1);
  now_ += std::chrono::hours(1);
  write(1);
  now_ += LogLimiter::kPeriod - std::chrono::seconds(1);
  write(19);
  EXPECT_THAT(takeLines(), SizeIs(21));
  write(1);
  EXPECT_THAT(takeLines(), ElementsAre(kNotice));
}

TEST_F(LogLimiterTest, WritesTheNumberOfDroppedLinesInTheDestructor) {
  write(22);
  takeLines();
  limiter_.reset();
  EXPECT_THAT(takeLines(), ElementsAre("2 lines of the ORB were left out"));
}

TEST_F(LogLimiterTest, WritesNothingInTheDestructorWithoutDroppedLines) {
  write(20);
  takeLines();
  limiter_.reset();
  EXPECT_THAT(takeLines(), SizeIs(0));
}

TEST(LimitedLog, IsNullForNull) {
  EXPECT_FALSE(orb::limited(nullptr));
}

}  // namespace
