// The receiver of the ORB's log lines.

#include <gtest/gtest.h>
// The second header needs the first.
#include <omniORB4/CORBA.h>

#include <omniORB4/omniORB.h>

#include <atomic>
#include <cstdlib>

#include "orb/orb.h"

namespace {

TEST(OrbLog, OfARunningServerIsRateLimited) {
  std::atomic<int> lines{0};
  const auto server =
      orb::startServer({}, {"127.0.0.1", 0}, [&lines](const std::string&) { ++lines; });
  for (int i = 0; i < 1000; ++i) {
    omniORB::logs(1, "line");
  }
  EXPECT_EQ(21, lines);
}

// Overwrites the stack of earlier calls.
__attribute__((noinline)) void scribble() {
  volatile char stack[16384];
  for (volatile char& byte : stack) {
    byte = 0x5a;
  }
}

// A size that the ORB rejects.
void failToStart() {
  orb::Options options;
  options.maxMessageBytes = 1;
  EXPECT_THROW(orb::startServer(options, {"127.0.0.1", 0}, nullptr), orb::EndpointError);
}

TEST(OrbLogDeathTest, HasNoReceiverAfterAFailedStart) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  EXPECT_EXIT(
      {
        failToStart();
        scribble();
        omniORB::logs(1, "a line for nobody");
        std::_Exit(0);
      },
      testing::ExitedWithCode(0), "");
}

}  // namespace
