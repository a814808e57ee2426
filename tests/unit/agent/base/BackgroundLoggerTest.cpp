// A logger that writes lines on a separate thread.

#include "agent/base/BackgroundLogger.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <future>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace {

using agent::BackgroundLogger;
using std::chrono::milliseconds;
using testing::AllOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;

constexpr milliseconds kLong{60000};

// Receives lines, and blocks in the first line until the test continues.
class Reader {
 public:
  explicit Reader(bool blocks) {
    if (!blocks) {
      mayEnd_.set_value();
    }
  }

  agent::WriteLine taker() {
    return [this](std::string_view line) {
      if (lines_.empty()) {
        entered_.set_value();
        mayEnd_.get_future().wait();
      }
      const std::lock_guard<std::mutex> lock(mutex_);
      lines_.emplace_back(line);
    };
  }

  void waitUntilInside() { entered_.get_future().wait(); }
  void release() { mayEnd_.set_value(); }

  std::vector<std::string> lines() {
    const std::lock_guard<std::mutex> lock(mutex_);
    return lines_;
  }

 private:
  std::promise<void> entered_;
  std::promise<void> mayEnd_;
  std::mutex mutex_;
  std::vector<std::string> lines_;
};

TEST(BackgroundLogger, WritesEachLineInOrderFromAnotherThread) {
  std::thread::id writer;
  std::vector<std::string> lines;
  BackgroundLogger logger(
      [&](std::string_view line) {
        writer = std::this_thread::get_id();
        lines.emplace_back(line);
      },
      10);
  logger.logger().info("a");
  logger.logger().error("b");
  ASSERT_TRUE(logger.flush(kLong));
  EXPECT_THAT(lines, ElementsAre(EndsWith("] a\n"), EndsWith("] b\n")));
  EXPECT_NE(std::this_thread::get_id(), writer);
}

TEST(BackgroundLogger, NeverWaitsForABlockedReader) {
  Reader reader(true);
  std::optional<BackgroundLogger> logger(std::in_place, reader.taker(), 3);
  logger->logger().info("first");
  reader.waitUntilInside();
  auto logged = std::async(std::launch::async, [&logger] {
    for (int i = 1; i <= 10; ++i) {
      logger->logger().info("line " + std::to_string(i));
    }
  });
  if (logged.wait_for(kLong / 3) != std::future_status::ready) {
    reader.release();
    FAIL() << "the logger waits for its reader";
  }
  EXPECT_FALSE(logger->flush(milliseconds(1)));  // takes a place, too
  reader.release();
  logger.reset();
  EXPECT_THAT(reader.lines(),
              ElementsAre(EndsWith("] first\n"),
                          AllOf(HasSubstr(" error ["),
                                EndsWith("] topo-agentd:0 8 lines of the log were dropped, because "
                                         "they were not read in time\n")),
                          EndsWith("] line 9\n"), EndsWith("] line 10\n")));
}

TEST(BackgroundLogger, ReportsEachDroppedLineOnce) {
  Reader reader(true);
  std::optional<BackgroundLogger> logger(std::in_place, reader.taker(), 1);
  logger->logger().info("first");
  reader.waitUntilInside();
  logger->logger().info("dropped");
  logger->logger().info("last");
  reader.release();
  ASSERT_TRUE(logger->flush(kLong));
  logger->logger().info("later");
  logger.reset();
  int reports = 0;
  for (const std::string& line : reader.lines()) {
    reports += line.find("were dropped") == std::string::npos ? 0 : 1;
  }
  EXPECT_EQ(1, reports);
  EXPECT_THAT(reader.lines().back(), EndsWith("] later\n"));
}

TEST(BackgroundLogger, FlushesAnEmptyQueueAtOnce) {
  Reader reader(false);
  BackgroundLogger logger(reader.taker(), 10);
  EXPECT_TRUE(logger.flush(kLong));
  EXPECT_TRUE(reader.lines().empty());
}

}  // namespace
