// Where the ORB's lines go.

#include <gtest/gtest.h>
// The first includes what the second needs.
#include <omniORB4/CORBA.h>

#include <omniORB4/omniORB.h>

#include <atomic>
#include <cstdlib>

#include "orb/orb.h"

namespace {

TEST(OrbLog, OfARunningServerIsLimited) {
  std::atomic<int> lines{0};
  const auto server =
      orb::startServer({}, {"127.0.0.1", 0}, [&lines](const std::string&) { ++lines; });
  for (int i = 0; i < 1000; ++i) {
    omniORB::logs(1, "line");
  }
  EXPECT_EQ(21, lines);
}

// Overwrites what earlier calls left on the stack.
__attribute__((noinline)) void scribble() {
  volatile char stack[16384];
  for (volatile char& byte : stack) {
    byte = 0x5a;
  }
}

// The ORB itself refuses this size.
void failToStart() {
  orb::Options options;
  options.maxMessageBytes = 1;
  EXPECT_THROW(orb::startServer(options, {"127.0.0.1", 0}, nullptr), orb::EndpointError);
}

TEST(OrbLogDeathTest, OfAFailedStartGoesNowhere) {
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
