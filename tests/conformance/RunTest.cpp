// topo-conformance as its users run it.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "tests/integration/Programs.h"
#include "tests/support/Process.h"

namespace {

using support::Ended;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;
using testing::StartsWith;

using Words = std::vector<std::string>;

Ended conformance(const Words& arguments) {
  return support::run(TOPO_CONFORMANCE, arguments);
}

Ended checkHost(const std::string& program) {
  return conformance({"--timeout", "5", "--", program, "{module}", "{consumer}"});
}

std::string lastLine(const std::string& text) {
  const std::string lines = text.substr(0, text.empty() ? 0 : text.size() - 1);
  return lines.substr(lines.rfind('\n') + 1);
}

// Sanitizers report the planted mistakes themselves.
class Conformance : public testing::Test {
 protected:
  void SetUp() override {
    if (integration::kSanitized) {
      GTEST_SKIP() << "topo-conformance is run in builds without sanitizers";
    }
  }
};

TEST_F(Conformance, PassesTheAgentThatItOperatesThroughTheConsole) {
  const Ended run = conformance({"--console", "--", TOPO_AGENTD, "--endpoint", "127.0.0.1:0",
                                 "--store", ":memory:", "--network", TOPO_NETWORKS "/backbone.json",
                                 "--module", "{module}"});
  EXPECT_EQ(run.status, 0) << run.out << run.err;
  EXPECT_THAT(lastLine(run.out), MatchesRegex("[0-9]+ passed, 0 failed, 0 skipped"));
}

TEST_F(Conformance, PassesARunningAgentByReference) {
  integration::RunningAgent agent({"--network", TOPO_NETWORKS "/backbone.json"});
  const Ended run = conformance({"--agent", agent.reference()});
  EXPECT_EQ(run.status, 0) << run.out << run.err;
  EXPECT_THAT(run.out, HasSubstr("pass  reload.serves  "));
  EXPECT_THAT(run.out, HasSubstr("skip  reload.mapped  "));
  EXPECT_THAT(lastLine(run.out), HasSubstr(" 0 failed, "));
}

TEST_F(Conformance, SkipsWhatAnAgentWithoutAConsoleCannotDo) {
  integration::RunningAgent agent({"--network", TOPO_NETWORKS "/backbone.json", "--no-console"});
  const Ended run = conformance({"--agent", agent.reference()});
  EXPECT_EQ(run.status, 0) << run.out << run.err;
  EXPECT_THAT(run.out, HasSubstr("pass  views.batches  "));
  EXPECT_THAT(run.out, HasSubstr("skip  reload.serves  "));
  EXPECT_THAT(run.out, HasSubstr("(the host has no console)"));
}

TEST_F(Conformance, PassesTheSampleHost) {
  const Ended run = checkHost(TOPO_SAMPLE_HOST);
  EXPECT_EQ(run.status, 0) << run.out << run.err;
  EXPECT_THAT(lastLine(run.out), HasSubstr(" 0 failed, "));
}

TEST_F(Conformance, EndsWithStatus2WhenTheHostCannotBeStarted) {
  const Ended missing = conformance({"--", "/no/such/host"});
  EXPECT_EQ(missing.status, 2);
  EXPECT_EQ(missing.out, "");
  EXPECT_THAT(missing.err, HasSubstr("the host did not become ready: it ended with status 127"));
  EXPECT_EQ(conformance({"--", "/bin/true"}).status, 2);
  EXPECT_EQ(conformance({"--agent", "no reference"}).status, 2);
}

TEST_F(Conformance, EndsWithStatus2ForAWrongCommandLine) {
  const Ended run = conformance({});
  EXPECT_EQ(run.status, 2);
  EXPECT_THAT(run.err, StartsWith("topo-conformance: give either the command of a host"));
}

// The host writes its process id and then waits for ever.
TEST_F(Conformance, LeavesNoProcessOfAHostThatIsNeverReady) {
  const support::TemporaryDirectory directory;
  const std::string file = directory.file("pid");
  const Ended run = conformance(
      {"--timeout", "1", "--", "/bin/sh", "-c", "sleep 600 & echo $! > " + file + "; wait"});
  EXPECT_EQ(run.status, 2);
  EXPECT_THAT(run.err, HasSubstr("printed no line \"ready REFERENCE\" within 1 s"));
  std::ifstream status("/proc/" + std::to_string(std::stoi(support::readFile(file))) + "/stat");
  std::string line;
  std::getline(status, line);
  EXPECT_THAT(line, Not(HasSubstr(") S "))) << "the process sleeps still";
}

struct FaultyHost {
  std::string name;
  std::string rule;
};

void PrintTo(const FaultyHost& host, std::ostream* out) {
  *out << host.rule;
}

std::vector<FaultyHost> faultyHosts() {
  std::vector<FaultyHost> hosts;
  std::istringstream entries(TOPO_FAULTY_HOSTS);
  for (std::string entry; std::getline(entries, entry, ',');) {
    const std::size_t colon = entry.find(':');
    hosts.push_back({entry.substr(0, colon), entry.substr(colon + 1)});
  }
  return hosts;
}

class ConformanceOf : public Conformance, public testing::WithParamInterface<FaultyHost> {};

TEST_P(ConformanceOf, AFaultyHostFailsWithTheRuleThatItBreaks) {
  const Ended run =
      checkHost(std::string(TOPO_FAULTY_HOSTS_FOLDER) + "/faulty_host_" + GetParam().name);
  EXPECT_EQ(run.status, 1) << run.err;
  EXPECT_THAT(run.out, HasSubstr("FAIL  " + GetParam().rule + "  "));
}

INSTANTIATE_TEST_SUITE_P(Hosts, ConformanceOf, testing::ValuesIn(faultyHosts()),
                         [](const auto& host) { return host.param.name; });

}  // namespace
