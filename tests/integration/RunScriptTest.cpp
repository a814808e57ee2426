// Tests of run.sh with fake programs and fake scripts for installing and building.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <string>

#include "tests/support/Process.h"
#include "tests/support/TemporaryDirectory.h"

namespace {

using testing::HasSubstr;

class RunScript : public testing::Test {
 protected:
  RunScript() {
    std::filesystem::copy_file(std::string(TOPO_NETWORKS) + "/../run.sh",
                               directory_.file("run.sh"));
    std::filesystem::create_directories(directory_.file("scripts"));
    std::filesystem::create_directories(directory_.file("build/release/bin"));
    writeScript("scripts/setup.sh", "");
    writeScript("scripts/build.sh", "");
    // The last argument is the IOR file.
    writeScript("build/release/bin/topo-agentd",
                "echo ready\necho \"$@\" >arguments\necho IOR: >\"${@: -1}\"\nexec sleep 30\n");
    writeScript("build/release/bin/topoctl", "echo a view\n");
  }

  std::string script() const { return directory_.file("run.sh"); }
  std::string argumentsOfTheAgent() const {
    return support::readFile(directory_.file("arguments"));
  }

  support::TemporaryDirectory directory_;

 private:
  void writeScript(const std::string& name, const std::string& commands) {
    std::filesystem::permissions(directory_.write(name, "#!/usr/bin/env bash\n" + commands),
                                 std::filesystem::perms::owner_all);
  }
};

TEST_F(RunScript, NamesTheStoreOfAServedNetwork) {
  const std::string network = std::filesystem::current_path() / "mine.json";
  const std::string store = directory_.file("mine.db");
  support::Process serve("/bin/bash", {script(), "--serve", "mine.json"});
  std::string printed;
  for (std::string line; line != "Ctrl-C stops the agent."; printed += line + "\n") {
    line = serve.readLine();
    ASSERT_FALSE(line.empty() && printed.size() > 10000) << printed;
  }
  EXPECT_THAT(printed, HasSubstr("The network and its changes are in " + store + ". "));
  EXPECT_THAT(argumentsOfTheAgent(), HasSubstr("--network " + network + " --store " + store +
                                               " --endpoint 127.0.0.1:2810"));
  serve.send(SIGTERM);
  EXPECT_EQ(0, serve.wait().status);
}

TEST_F(RunScript, ShowsTheSampleNetworkWithoutAStore) {
  const support::Ended ended = support::Process("/bin/bash", {script()}).wait();
  EXPECT_EQ(0, ended.status) << ended.err;
  EXPECT_EQ("ready\na view\n", ended.out);
  EXPECT_THAT(
      argumentsOfTheAgent(),
      HasSubstr("--network networks/backbone.json --store :memory: --endpoint 127.0.0.1:0"));
}

}  // namespace
