// Stops of an agent that waits for another process.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>

#include "tests/integration/Programs.h"
#include "tests/support/FullPipe.h"
#include "tests/unit/orb/SilentPeer.h"

namespace integration {
namespace {

using support::Ended;
using testing::HasSubstr;

std::vector<std::string> somewhere(const std::vector<std::string>& more) {
  std::vector<std::string> all = {"--store", ":memory:", "--endpoint", "127.0.0.1:0"};
  all.insert(all.end(), more.begin(), more.end());
  return all;
}

// Runs topo-agentd with redirections in shell syntax.
support::Process startRedirected(const std::string& redirections,
                                 const std::vector<std::string>& more) {
  std::vector<std::string> arguments = {"-c", "exec \"$0\" \"$@\" " + redirections,
                                        ownPrograms().agent};
  const std::vector<std::string> options = somewhere(more);
  arguments.insert(arguments.end(), options.begin(), options.end());
  return support::Process("/bin/sh", arguments);
}

TEST(AgentStop, EndsAStartThatWaitsForANamingService) {
  orb_tests::SilentPeer naming;
  support::Process agent(ownPrograms().agent, somewhere({"--naming", naming.corbaloc()}));
  naming.waitForRequest();
  agent.send(SIGTERM);
  const Ended ended = agent.wait();
  EXPECT_EQ(0, ended.status);
  EXPECT_EQ("", ended.err);
  EXPECT_EQ("", ended.out);
}

// The ORB resolves a corbaname with a timeout that the agent cannot interrupt.
TEST(AgentStop, EndsAStartInTheMiddleOfALongStep) {
  orb_tests::SilentPeer naming;
  const std::string name = "corbaname:" + naming.address() + "#Other/Root";
  support::Process agent(ownPrograms().agent, somewhere({"--naming", name}));
  naming.waitForRequest();
  agent.send(SIGTERM);
  const Ended ended = agent.wait();
  EXPECT_EQ(0, ended.status);
  EXPECT_THAT(ended.err, HasSubstr("stopped in the middle of a step of the start"));
}

TEST(AgentStop, DoesNotWaitForTheReaderOfStandardError) {
  const support::FullPipe unread;
  support::Process agent = startRedirected("2>" + unread.path(), {"--log-level", "3"});
  EXPECT_THAT(agent.readLine(), HasSubstr("topo-agentd ready"));
  agent.send(SIGTERM);
  EXPECT_EQ(0, agent.wait().status);
}

TEST(AgentStop, EndsARefusedStartThoughStandardErrorIsNotRead) {
  const support::FullPipe unread;
  support::Process agent = startRedirected("2>" + unread.path(), {"--module", "/nowhere"});
  EXPECT_EQ(1, agent.wait().status);
}

TEST(AgentStop, ServesAndStopsThoughStandardOutputIsNotRead) {
  const support::FullPipe unread;
  // The test reads the agent's standard error as standard output of the shell.
  support::Process agent = startRedirected("2>&1 1>" + unread.path(), {});
  EXPECT_THAT(agent.readLine(), HasSubstr("standard output cannot be written: topo-agentd "
                                          "ready"));
  agent.send(SIGTERM);
  EXPECT_EQ(0, agent.wait().status);
}

TEST(AgentStop, IgnoresTheEndOfItsTerminal) {
  RunningAgent agent({});
  agent.process().send(SIGHUP);
  EXPECT_TRUE(records(agent, {"topo"}).empty());
  const Ended ended = agent.stop(SIGTERM);
  EXPECT_EQ(0, ended.signal);
  EXPECT_EQ(0, ended.status);
}

}  // namespace
}  // namespace integration
