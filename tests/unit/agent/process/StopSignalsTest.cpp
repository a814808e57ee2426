// The signals that stop the agent.

#include "agent/process/StopSignals.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <future>
#include <thread>

namespace {

using agent::StopSignals;
using std::chrono::hours;
using std::chrono::milliseconds;
using std::chrono::minutes;
using std::chrono::seconds;

void ignore() {}

class StoppedBy : public testing::TestWithParam<int> {};

TEST_P(StoppedBy, WakesTheWaitingThread) {
  StopSignals signals(hours(1), ignore);
  signals.startEnded();
  EXPECT_FALSE(signals.arrived());
  ::kill(::getpid(), GetParam());
  signals.wait();
  EXPECT_TRUE(signals.arrived());
}

INSTANTIATE_TEST_SUITE_P(Signals, StoppedBy, testing::Values(SIGINT, SIGTERM));

TEST(StopSignals, CallTheFunctionAtEverySighup) {
  std::promise<void> calls[2];
  int count = 0;
  StopSignals signals(hours(1), ignore);
  signals.onHangup([&] { calls[count++].set_value(); });
  for (std::promise<void>& call : calls) {
    ::kill(::getpid(), SIGHUP);
    EXPECT_EQ(std::future_status::ready, call.get_future().wait_for(minutes(1)));
  }
  EXPECT_FALSE(signals.arrived());
}

TEST(StopSignals, StopAfterASighup) {
  std::promise<void> called;
  StopSignals signals(hours(1), ignore);
  signals.onHangup([&called] { called.set_value(); });
  ::kill(::getpid(), SIGHUP);
  called.get_future().wait();
  signals.onHangup(nullptr);
  signals.startEnded();
  ::kill(::getpid(), SIGTERM);
  signals.wait();
  EXPECT_TRUE(signals.arrived());
}

// Whether a SIGHUP of the process is pending.
bool isHangupPending() {
  sigset_t pending;
  sigpending(&pending);
  return sigismember(&pending, SIGHUP) == 1;
}

TEST(StopSignals, CallTheFunctionForASighupOfTheStart) {
  std::promise<void> called;
  StopSignals signals(hours(1), ignore);
  ::kill(::getpid(), SIGHUP);
  while (isHangupPending()) {
    std::this_thread::yield();
  }
  signals.onHangup([&called] { called.set_value(); });
  EXPECT_EQ(std::future_status::ready, called.get_future().wait_for(seconds(20)));
  signals.onHangup(nullptr);
}

TEST(StopSignals, IgnoreSighupWithoutAFunctionAndSigpipe) {
  StopSignals signals(hours(1), ignore);
  ::kill(::getpid(), SIGHUP);
  ::kill(::getpid(), SIGPIPE);
  EXPECT_FALSE(signals.arrived());
}

TEST(StopSignals, CallOnOverdueWhenAStartDoesNotEnd) {
  std::promise<void> overdue;
  StopSignals signals(milliseconds(1), [&overdue] { overdue.set_value(); });
  ::kill(::getpid(), SIGTERM);
  EXPECT_EQ(std::future_status::ready, overdue.get_future().wait_for(minutes(1)));
}

TEST(StopSignals, DoNotCallOnOverdueAfterTheEndOfTheStart) {
  std::atomic<bool> overdue{false};
  {
    StopSignals signals(hours(1), [&overdue] { overdue = true; });
    ::kill(::getpid(), SIGTERM);
    signals.wait();
    signals.startEnded();
  }
  EXPECT_FALSE(overdue);
}

TEST(StopSignals, DoNotCallOnOverdueAfterTheirDestruction) {
  std::atomic<bool> overdue{false};
  {
    StopSignals signals(hours(1), [&overdue] { overdue = true; });
    ::kill(::getpid(), SIGTERM);
    signals.wait();
  }
  {
    const StopSignals unused(milliseconds(0), [&overdue] { overdue = true; });
  }
  EXPECT_FALSE(overdue);
}

}  // namespace
