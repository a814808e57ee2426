// Export of a running agent's network, and restore in another agent.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <string>
#include <vector>

#include "tests/integration/Programs.h"

namespace {

using integration::RunningAgent;
using integration::runTopoctl;
using support::Ended;
using testing::StartsWith;
using Words = std::vector<std::string>;

const std::string kBackbone = std::string(TOPO_NETWORKS) + "/backbone.json";

class Export : public testing::Test {
 protected:
  static void run(const RunningAgent& agent, Words words) {
    words.insert(words.begin(), {"--ior-file", agent.iorFile()});
    const Ended ended = runTopoctl(words);
    EXPECT_EQ(0, ended.status) << ended.err;
  }

  std::string exportOf(const RunningAgent& agent, const std::string& name) const {
    const std::string path = directory_.file(name);
    run(agent, {"export", path});
    return path;
  }

  static std::string textOf(const RunningAgent& agent, Words words) {
    words.insert(words.begin(), {"--ior-file", agent.iorFile(), "--format", "json"});
    return runTopoctl(words).out;
  }

  static void expectTheSame(const RunningAgent& left, const RunningAgent& right) {
    for (const Words& view : {Words{"topo"}, Words{"protect"}, Words{"below", "Europe"},
                              Words{"clocks"}, Words{"clock-links"}}) {
      const std::string text = textOf(left, view);
      EXPECT_THAT(text, StartsWith("["));
      EXPECT_EQ(text, textOf(right, view)) << view.front();
    }
  }

  const support::TemporaryDirectory directory_;
};

TEST_F(Export, RestoresTheSameViewsAndAttributes) {
  const RunningAgent agent({"--network", kBackbone, "--test-switch"});
  run(agent, {"node", "create", "NE=33", "--parent", "Europe", "--name", "Oslo"});
  run(agent, {"node", "create", "new", "--name", "N\"\\\xc3\xa4\n", "--params", "-1,2",
              "--attribute", "location=Hall||3", "--attribute", "location=x"});
  run(agent, {"set", "owner", "TopoSubnetwork=new", "the owner"});
  run(agent, {"set", "user-label", "TopoSubnetwork=new", "the label"});
  run(agent, {"set", "info", "TopoSubnetwork=new", "key=value"});
  run(agent, {"set", "info", "TopoSubnetwork=new", "other=2"});
  const std::string file = exportOf(agent, "first.json");
  const std::string store = directory_.file("restored.db");
  {
    RunningAgent empty(Words{}, store);
    run(empty, {"restore", file});
    EXPECT_EQ(0, empty.stop(SIGTERM).status);
  }
  // The name of the managing system needs a start.
  const RunningAgent restored({"--test-switch"}, store);
  expectTheSame(agent, restored);
  EXPECT_EQ(textOf(agent, {"get", "TopoSubnetwork=new"}),
            textOf(restored, {"get", "TopoSubnetwork=new"}));
  EXPECT_EQ(support::readFile(file), support::readFile(exportOf(restored, "second.json")));
  // The element was shown for its node only.
  run(agent, {"node", "delete", "NE=33"});
  run(restored, {"node", "delete", "NE=33"});
  expectTheSame(agent, restored);
}

TEST_F(Export, LoadsAsTheFirstNetwork) {
  const RunningAgent agent({"--network", kBackbone});
  run(agent, {"set", "owner", "ManagedElement=1", "x"});
  const std::string file = exportOf(agent, "first.json");
  const RunningAgent loaded({"--network", file});
  expectTheSame(agent, loaded);
  EXPECT_EQ(support::readFile(file), support::readFile(exportOf(loaded, "second.json")));
}

TEST_F(Export, ReplacesAnotherNetworkAndItsAttributes) {
  const RunningAgent agent({"--network", kBackbone});
  const std::string file = exportOf(agent, "first.json");
  run(agent, {"node", "create", "new", "--name", "N"});
  run(agent, {"set", "owner", "TopoSubnetwork=new", "the owner"});
  run(agent, {"restore", file});
  EXPECT_EQ(support::readFile(file), support::readFile(exportOf(agent, "second.json")));
}

TEST_F(Export, RestoresAnEmptyNetwork) {
  const RunningAgent agent(Words{});
  const std::string file = exportOf(agent, "first.json");
  const RunningAgent restored(Words{});
  run(restored, {"restore", file});
  EXPECT_EQ(support::readFile(file), support::readFile(exportOf(restored, "second.json")));
}

TEST_F(Export, KeepsAnExistingFile) {
  const RunningAgent agent(Words{});
  const std::string file = directory_.write("taken.json", "mine");
  const Ended ended = runTopoctl({"--ior-file", agent.iorFile(), "export", file});
  EXPECT_EQ(1, ended.status);
  EXPECT_EQ("mine", support::readFile(file));
}

}  // namespace
