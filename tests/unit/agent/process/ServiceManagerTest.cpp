// The messages to a service manager, received on a socket of the test.

#include "agent/process/ServiceManager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <stdexcept>
#include <string>

#include "tests/support/EnvironmentVariable.h"
#include "tests/support/NotifySocket.h"

namespace {

using agent::ServiceManager;
using support::EnvironmentVariable;
using testing::StartsWith;

class ServiceManagers : public testing::Test {
 protected:
  support::NotifySocket socket_;
  const EnvironmentVariable notifySocket_{"NOTIFY_SOCKET", socket_.path()};
};

TEST_F(ServiceManagers, GetOneMessageAtTheStartAndOneAtTheStop) {
  ServiceManager manager;
  manager.ready("serves 42 nodes", [] { FAIL() << "no keep-alive message is expected"; });
  EXPECT_EQ("READY=1\nSTATUS=serves 42 nodes", socket_.next());
  manager.stopping();
  EXPECT_EQ("STOPPING=1", socket_.next());
  EXPECT_EQ("", socket_.arrived());
}

TEST_F(ServiceManagers, GetKeepAliveMessagesFromTheStartToTheStop) {
  const EnvironmentVariable interval("WATCHDOG_USEC", "2000");
  const EnvironmentVariable process("WATCHDOG_PID", std::to_string(getpid()));
  ServiceManager manager;
  int checks = 0;
  manager.ready("serves", [&checks] { ++checks; });
  EXPECT_THAT(socket_.next(), StartsWith("READY=1"));
  EXPECT_EQ("WATCHDOG=1", socket_.next());
  EXPECT_EQ("WATCHDOG=1", socket_.next());
  manager.stopping();
  std::string last;
  for (std::string message = socket_.arrived(); !message.empty(); message = socket_.arrived()) {
    last = message;
  }
  EXPECT_EQ("STOPPING=1", last);
  EXPECT_LE(2, checks);
}

TEST_F(ServiceManagers, GetNoKeepAliveMessageWhileTheCheckFails) {
  const EnvironmentVariable interval("WATCHDOG_USEC", "2000");
  const EnvironmentVariable process("WATCHDOG_PID", std::to_string(getpid()));
  ServiceManager manager;
  int checks = 0;
  manager.ready("serves", [&checks] {
    if (++checks <= 5) {
      throw std::runtime_error("no answer");
    }
  });
  EXPECT_THAT(socket_.next(), StartsWith("READY=1"));
  EXPECT_EQ("WATCHDOG=1", socket_.next());
  manager.stopping();
  EXPECT_LT(5, checks);
}

TEST(ServiceManager, OfNobodyGetsNothing) {
  ServiceManager manager;
  manager.ready("serves", [] { FAIL(); });
  manager.stopping();
}

}  // namespace
