#include "orb/limitlog.h"

#include <gmock/gmock.h>

#include <vector>

namespace {

using orb::LimitLog;
using testing::ElementsAre;

class LimitLogTest : public testing::Test {
 protected:
  std::vector<std::string> lines_;
  LimitLog log_{[this](const std::string& line) { lines_.push_back(line); }};
  const LimitLog::Time begin_;
  const LimitLog::Time end_ = begin_ + orb::Episode::kDefaultQuiet;
};

TEST_F(LimitLogTest, LogsTheFirstRefusalAndTheirNumber) {
  for (int i = 0; i < 3; ++i) {
    log_.tooManyConnections(7, begin_);
  }
  EXPECT_THAT(lines_, ElementsAre("connections are refused: 7 connections, the limit, are open"));
  EXPECT_EQ(end_, log_.nextEnd());
  log_.endEpisodes(end_ - std::chrono::milliseconds(1));
  EXPECT_EQ(1U, lines_.size());
  log_.endEpisodes(end_);
  EXPECT_EQ("3 connections were refused", lines_.back());
  EXPECT_FALSE(log_.nextEnd().has_value());
}

TEST_F(LimitLogTest, CountsAllReasonsToRefuseAConnectionTogether) {
  log_.outOfDescriptors(4, begin_);
  log_.outOfMemory(begin_);
  log_.endEpisodes(end_);
  EXPECT_THAT(lines_, ElementsAre("connections are refused: no file descriptor is left, 4 "
                                  "connections are open",
                                  "2 connections were refused"));
}

TEST_F(LimitLogTest, CountsEachKindSeparately) {
  log_.requestTooLarge("import", 70000, "127.0.0.1", begin_);
  log_.requestIncomplete(begin_ + std::chrono::seconds(1));
  EXPECT_EQ(end_, log_.nextEnd());
  log_.endEpisodes(end_);
  EXPECT_THAT(lines_,
              ElementsAre("a request of import, 70000 bytes from 127.0.0.1, was refused for its "
                          "size",
                          "a connection was closed: its request was not complete in time",
                          "1 requests were refused for their size"));
  log_.endEpisodes(end_ + std::chrono::seconds(1));
  EXPECT_EQ("1 connections were closed because of incomplete requests", lines_.back());
}

TEST_F(LimitLogTest, CutsTheNameOfAnOperation) {
  log_.requestTooLarge(std::string(1000, 'x'), 1, "h", begin_);
  EXPECT_EQ("a request of " + std::string(64, 'x') + ", 1 bytes from h, was refused for its size",
            lines_.front());
}

TEST_F(LimitLogTest, DropsALineForWhichThereIsNoMemory) {
  LimitLog log([](const std::string&) { throw std::bad_alloc(); });
  log.outOfMemory(begin_);
  EXPECT_EQ(end_, log.nextEnd());
}

TEST(LimitLogWithoutAFunction, LogsNothing) {
  LimitLog log(nullptr);
  log.outOfMemory({});
  log.endEpisodes(LimitLog::Time() + orb::Episode::kDefaultQuiet);
  EXPECT_FALSE(log.nextEnd().has_value());
}

}  // namespace
