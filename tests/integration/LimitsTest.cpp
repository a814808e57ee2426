// The limits of the agent for clients.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <list>
#include <string>

#include "tests/integration/Programs.h"
#include "tests/unit/orb/RawClient.h"

namespace {

using integration::Programs;
using integration::RunningAgent;
using integration::runTopoctl;
using orb_tests::RawClient;
using orb_tests::requestTo;
using support::Ended;
using testing::HasSubstr;
using testing::Not;

const std::string kBackbone = std::string(TOPO_NETWORKS) + "/backbone.json";

orb::Endpoint endpointOf(const RunningAgent& agent) {
  const std::string text = agent.endpoint();
  return {"127.0.0.1", static_cast<std::uint16_t>(std::stoi(text.substr(text.rfind(':') + 1)))};
}

bool isServed(const RawClient& client) {
  return client.send(requestTo("TopoManagement", "_non_existent").bytes()) && client.answer();
}

std::ptrdiff_t threadsOf(pid_t pid) {
  const std::filesystem::directory_iterator threads("/proc/" + std::to_string(pid) + "/task");
  return std::distance(begin(threads), end(threads));
}

// The agent, started by a script that runs a shell command first.
Programs startedAfter(const std::string& command, const support::TemporaryDirectory& directory) {
  Programs programs = integration::ownPrograms();
  const std::string script = directory.write(
      "agent", "#!/bin/sh\n" + command + "\nexec '" + programs.agent + "' \"$@\"\n");
  std::filesystem::permissions(script, std::filesystem::perms::owner_all);
  programs.agent = script;
  return programs;
}

TEST(Limits, OfOpenFilesLeaveTheAgentInService) {
  const support::TemporaryDirectory directory;
  RunningAgent agent({"--network", kBackbone}, ":memory:", "127.0.0.1:0",
                     startedAfter("ulimit -n 128", directory));
  std::list<RawClient> clients;
  for (int i = 0; i < 300; ++i) {
    clients.emplace_back(endpointOf(agent));
  }
  EXPECT_TRUE(isServed(clients.front()));
  EXPECT_TRUE(clients.back().isClosedByPeer());
  // Some ORBs have a thread for each of the 64 admitted connections.
  EXPECT_LT(threadsOf(agent.process().pid()), 64 + 30);
  clients.clear();
  const Ended ended = agent.stop(SIGTERM);
  EXPECT_EQ(0, ended.status);
  EXPECT_THAT(ended.err, HasSubstr("at most 64 connections instead of 500"));
  const std::string refused = "connections are refused";
  EXPECT_THAT(ended.err, HasSubstr(refused));
  EXPECT_THAT(ended.err.substr(ended.err.find(refused) + 1), Not(HasSubstr(refused)));
}

TEST(Limits, OfOpenFilesAreRaisedAtTheStart) {
  const support::TemporaryDirectory directory;
  RunningAgent agent({}, ":memory:", "127.0.0.1:0", startedAfter("ulimit -S -n 128", directory));
  rlimit files{};
  ASSERT_EQ(0, prlimit(agent.process().pid(), RLIMIT_NOFILE, nullptr, &files));
  EXPECT_EQ(files.rlim_max, files.rlim_cur);
  EXPECT_LT(128U, files.rlim_cur);
}

TEST(Limits, OfMemoryRefuseViewsAndLeaveTheAgentInService) {
  RunningAgent agent({"--network", kBackbone, "--memory", "1048576"});
  const Ended view = runTopoctl({"--ior-file", agent.iorFile(), "topo"});
  EXPECT_NE(0, view.status);
  EXPECT_THAT(view.err, HasSubstr("NO_RESOURCES"));
  EXPECT_TRUE(isServed(RawClient(endpointOf(agent))));
  const Ended ended = agent.stop(SIGTERM);
  EXPECT_EQ(0, ended.status);
  EXPECT_THAT(ended.err, HasSubstr("is refused: memory is short"));
}

TEST(Limits, ApplyToTheSubscribersOfOneAddress) {
  const RunningAgent agent({"--max-subscribers-per-peer", "1"});
  const integration::Watcher first(agent);
  integration::Watcher second(agent);
  EXPECT_TRUE(second.first().is_null());
  EXPECT_THAT(second.stop().err, HasSubstr("1 subscribers of address 127.0.0.1 already"));
}

TEST(Limits, ApplyToTheMemoryOfAQueue) {
  const RunningAgent agent({"--queue-memory", "65536", "--event-channel",
                            "corbaloc:iiop:1.2@" + integration::quietEndpoint() + "/Channel"});
  for (const char* const id : {"a", "b", "c"}) {
    const Ended created = runTopoctl(
        {"--ior-file", agent.iorFile(), "node", "create", id, "--name", std::string(15000, 'x')});
    ASSERT_EQ(0, created.status) << created.err;
  }
  const nlohmann::json status = integration::records(agent, {"status"});
  EXPECT_LE(1, status["receivers"][0]["lost"].get<int>()) << status;
  EXPECT_LE(1, status["receivers"][0]["queued"].get<int>()) << status;
}

TEST(Limits, ApplyToConnections) {
  RunningAgent agent({"--network", kBackbone, "--max-connections", "2"});
  const RawClient first(endpointOf(agent));
  const RawClient second(endpointOf(agent));
  EXPECT_TRUE(isServed(first));
  EXPECT_TRUE(isServed(second));
  EXPECT_TRUE(RawClient(endpointOf(agent)).isClosedByPeer());
  EXPECT_EQ(2, runTopoctl({"--ior-file", agent.iorFile(), "topo"}).status);
}

TEST(Limits, OfRequestsDoNotApplyToAnImport) {
  const support::TemporaryDirectory directory;
  const std::string file = directory.write(
      "more.json", R"({"format":"topo-network/1","topoNodes":[{"id":"more","name":"More"}]})" +
                       std::string(3000000, ' '));
  RunningAgent agent({"--network", kBackbone, "--max-request", "8192"});
  const Ended imported = runTopoctl({"--ior-file", agent.iorFile(), "import", file});
  EXPECT_EQ(0, imported.status) << imported.err;
  const Ended refused = runTopoctl({"--ior-file", agent.iorFile(), "node", "create", "other",
                                    "--name", std::string(10000, 'x')});
  EXPECT_EQ(4, refused.status);
  EXPECT_THAT(refused.err, HasSubstr("over the size limit"));
  EXPECT_THAT(refused.err, HasSubstr("--max-request"));
}

TEST(Limits, OfMemoryApplyToAnImport) {
  const support::TemporaryDirectory directory;
  const std::string file = directory.write(
      "more.json", R"({"format":"topo-network/1","topoNodes":[{"id":"more","name":"More"}]})" +
                       std::string(20000000, ' '));
  RunningAgent agent({"--network", kBackbone, "--memory", "400000000"});
  const Ended refused = runTopoctl({"--ior-file", agent.iorFile(), "import", file});
  EXPECT_NE(0, refused.status);
  EXPECT_THAT(refused.err, HasSubstr("NO_RESOURCES"));
  EXPECT_EQ(0, runTopoctl({"--ior-file", agent.iorFile(), "status"}).status);
  const Ended ended = agent.stop(SIGTERM);
  EXPECT_EQ(0, ended.status);
  EXPECT_THAT(ended.err, HasSubstr("bytes is refused: memory is short"));
}

}  // namespace
