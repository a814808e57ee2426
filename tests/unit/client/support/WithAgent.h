// A fixture with a fake agent that listens on a free port, for calls of this process and of others.

#ifndef TESTS_UNIT_CLIENT_SUPPORT_WITHAGENT_H
#define TESTS_UNIT_CLIENT_SUPPORT_WITHAGENT_H

#include <gtest/gtest.h>

#include <iosfwd>
#include <memory>
#include <string>

#include "client/agent/Reload.h"
#include "client/commandline/Options.h"
#include "orb/orb.h"
#include "tests/unit/client/support/FakeAgent.h"

namespace topoctl {

// The report of a failed command.
struct CommandFailure {
  int exitCode;
  std::string line;  // of standard error
};

inline CommandFailure exitWith(int exitCode, const std::string& line) {
  return {exitCode, line};
}

inline bool operator==(const CommandFailure& a, const CommandFailure& b) {
  return a.exitCode == b.exitCode && a.line == b.line;
}

void PrintTo(const CommandFailure& failure, std::ostream* out);

// Calls within this process bypass the network: they have no size limit and never fail to connect.
// Tests of those failures run the program instead.
class WithAgent : public testing::Test {
 protected:
  static void SetUpTestSuite() { startServer(orb::Options()); }
  static void TearDownTestSuite();

  void SetUp() override;
  void TearDown() override;

  static void startServer(const orb::Options& options);
  static orb::Server& server() { return *server_; }

  static std::string address();         // HOST:PORT
  static std::string agentReference();  // corbaloc
  Options options(const std::string& command, std::uint32_t howMany = kDefaultHowMany) const;

  // Runs a command in this process and returns its output. Exceptions pass.
  std::string output(const Options& options) const;

  // Runs a command that fails in this process. Fails the test when the command succeeds.
  CommandFailure failureOf(const Options& options) const;

  Script script;
  RetryPolicy retry = withoutRetries();

 private:
  static RetryPolicy withoutRetries() {
    RetryPolicy policy;
    policy.limit = policy.limit.zero();
    return policy;
  }

  static std::unique_ptr<orb::Server> server_;

  PortableServer::Servant_var<FakeManager> manager_;
  std::unique_ptr<orb::WellKnownObject> published_;
};

}  // namespace topoctl

#endif
