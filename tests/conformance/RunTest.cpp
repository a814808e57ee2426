// topo-conformance as its users run it.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/integration/Programs.h"
#include "tests/support/Process.h"

namespace {

using support::Ended;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;
using testing::StartsWith;

using Words = std::vector<std::string>;

Ended conformance(const Words& arguments) {
  return support::run(TOPO_CONFORMANCE, arguments);
}

std::string faultyHost(const std::string& name) {
  return TOPO_FAULTY_HOSTS_FOLDER "/faulty_host_" + name;
}

Ended checkHost(const std::string& program) {
  return conformance({"--timeout", "5", "--", program, "{module}", "{consumer}"});
}

Ended checkRules(const std::string& program, const Words& rules) {
  Words arguments = {"--timeout", "3"};
  for (const std::string& rule : rules) {
    arguments.insert(arguments.end(), {"--rule", rule});
  }
  arguments.insert(arguments.end(), {"--", program, "{module}", "{consumer}"});
  return conformance(arguments);
}

Words words(const std::string& text) {
  std::istringstream stream(text);
  return Words(std::istream_iterator<std::string>(stream), {});
}

std::string lastLine(const std::string& text) {
  const std::string lines = text.substr(0, text.empty() ? 0 : text.size() - 1);
  return lines.substr(lines.rfind('\n') + 1);
}

// The rules of the output in their order.
Words ruleLines(const std::string& out) {
  Words rules;
  std::istringstream lines(out);
  for (std::string line; std::getline(lines, line) && line.substr(4, 2) == "  ";) {
    rules.push_back(line.substr(6, line.find("  ", 6) - 6));
  }
  return rules;
}

TEST(Conformance, PassesTheAgentThatItOperatesThroughTheConsole) {
  const Ended run = conformance({"--console", "--", TOPO_AGENTD, "--endpoint", "127.0.0.1:0",
                                 "--store", ":memory:", "--network", TOPO_NETWORKS "/backbone.json",
                                 "--module", "{module}"});
  EXPECT_EQ(run.status, 0) << run.out << run.err;
  EXPECT_THAT(lastLine(run.out), MatchesRegex("[0-9]+ passed, 0 failed, 0 skipped"));
}

TEST(Conformance, PassesARunningAgentByReference) {
  integration::RunningAgent agent({"--network", TOPO_NETWORKS "/backbone.json"});
  const Ended run = conformance({"--agent", agent.reference()});
  EXPECT_EQ(run.status, 0) << run.out << run.err;
  EXPECT_THAT(run.out, HasSubstr("pass  reload.serves  "));
  EXPECT_THAT(run.out, HasSubstr("skip  reload.mapped  "));
  EXPECT_THAT(lastLine(run.out), HasSubstr(" 0 failed, "));
}

TEST(Conformance, SkipsWhatAnAgentWithoutAConsoleCannotDo) {
  integration::RunningAgent agent({"--network", TOPO_NETWORKS "/backbone.json", "--no-console"});
  const Ended run = conformance({"--agent", agent.reference()});
  EXPECT_EQ(run.status, 0) << run.out << run.err;
  EXPECT_THAT(run.out, HasSubstr("pass  views.batches  "));
  EXPECT_THAT(run.out, HasSubstr("skip  reload.serves  "));
  EXPECT_THAT(run.out, HasSubstr("(the host has no console)"));
}

TEST(Conformance, PassesTheSampleHost) {
  const Ended run = checkHost(TOPO_SAMPLE_HOST);
  EXPECT_EQ(run.status, 0) << run.out << run.err;
  EXPECT_THAT(lastLine(run.out), HasSubstr(" 0 failed, "));
}

TEST(Conformance, EndsWithStatus2WhenTheHostCannotBeStarted) {
  const Ended missing = conformance({"--", "./nohost", "{module}"});
  EXPECT_EQ(missing.status, 2);
  EXPECT_EQ(missing.out, "");
  EXPECT_EQ(missing.err, "topo-conformance: the program ./nohost does not exist\n");
  EXPECT_EQ(conformance({"--", "/bin/true", "{module}"}).status, 2);
  EXPECT_EQ(conformance({"--agent", "no reference"}).status, 2);
}

TEST(Conformance, EndsWithStatus2ForAWrongCommandLine) {
  const Ended run = conformance({});
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.err,
            "topo-conformance: give either the command of a host, after --, or --agent "
            "REFERENCE\n");
  EXPECT_EQ(conformance({"--", "/bin/true", "{modul}"}).status, 2);
}

TEST(Conformance, EndsWithAFailureWhenItsOutputCannotBeWritten) {
  const std::string program = TOPO_CONFORMANCE;
  for (const std::string& arguments : {std::string("-- ") + TOPO_SAMPLE_HOST + " {module}",
                                       std::string("--help"), std::string("--version")}) {
    const Ended run = support::run("/bin/sh", {"-c", program + ' ' + arguments + " > /dev/full"});
    EXPECT_EQ(run.status, 2) << arguments;
  }
}

TEST(Conformance, SaysThatNotificationsWereNotChecked) {
  const Ended run = conformance({"--timeout", "5", "--", TOPO_SAMPLE_HOST, "{module}"});
  EXPECT_EQ(run.status, 0) << run.out << run.err;
  EXPECT_THAT(run.out, HasSubstr("\nnotifications were not checked: add {consumer} "));
  EXPECT_THAT(lastLine(run.out), HasSubstr(" 0 failed, "));
}

// A start with lazy binding succeeds, so the other rules are checked.
TEST(Conformance, NamesTheUndefinedSymbolOnceAndChecksTheOtherRules) {
  const Ended run = checkHost(faultyHost("lacks_a_function"));
  std::istringstream lines(run.out);
  std::string line;
  while (std::getline(lines, line) && line.find("link.symbols") == std::string::npos) {
  }
  EXPECT_THAT(line, MatchesRegex("FAIL  link\\.symbols  .*undefined symbol: .*resetObject.*"));
  EXPECT_EQ(line.find("ended with status"), line.rfind("ended with status")) << line;
  EXPECT_THAT(run.out, HasSubstr("\npass  views.interfaces  "));
  EXPECT_THAT(run.out, Not(HasSubstr("the host does not start")));
}

TEST(Conformance, EndsWithStatus2ForAModuleOrProbeThatIsNoFile) {
  for (const char* option : {"--module", "--probe"}) {
    for (const char* path : {"/no/such/module.so", "/tmp", ""}) {
      const Ended run = conformance({option, path, "--", "/bin/true", "{module}"});
      EXPECT_EQ(run.status, 2);
      EXPECT_EQ(run.err,
                "topo-conformance: " + std::string(option) + ' ' + path + ": no such file\n");
    }
  }
}

struct UnreadyHost {
  std::string name;
  std::string script;
  std::string reason;
};

void PrintTo(const UnreadyHost& host, std::ostream* out) {
  *out << host.script;
}

class ConformanceOfAnUnreadyHost : public testing::TestWithParam<UnreadyHost> {};

TEST_P(ConformanceOfAnUnreadyHost, EndsWithOneBoundedLine) {
  const Ended run =
      conformance({"--timeout", "1", "--", "/bin/sh", "-c", GetParam().script, "{module}"});
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.out, "");
  EXPECT_THAT(run.err, StartsWith("topo-conformance: "));
  EXPECT_THAT(run.err, HasSubstr(GetParam().reason));
  EXPECT_EQ(run.err.find('\n'), run.err.size() - 1);
  EXPECT_EQ(run.err.find('\x1b'), std::string::npos);
  EXPECT_LT(run.err.size(), 2100U);
}

INSTANTIATE_TEST_SUITE_P(
    Hosts, ConformanceOfAnUnreadyHost,
    testing::Values(
        UnreadyHost{"WritesLinesWithoutPause", "exec yes", "within 1 s"},
        UnreadyHost{"WritesALineWithoutEnd", "yes | tr -d '\\n'", "within 1 s"},
        UnreadyHost{"ClosesItsOutput", "exec >&-; sleep 600", "closed its standard output"},
        UnreadyHost{"LeavesAChildWithItsOutput", "sleep 600 & exit 4", "status 4"},
        UnreadyHost{"IgnoresItsEnd", "trap '' TERM; sleep 600; sleep 600", "within 1 s"},
        UnreadyHost{"HasALongReference",
                    "printf 'ready IOR:'; yes | tr -d '\\n' | head -c 900000; echo; sleep 600",
                    "the reference IOR:yy"},
        UnreadyHost{"WritesMegabytesOfErrors",
                    "yes | tr -d '\\n' | head -c 3000000 >&2; echo the end >&2; exit 3", "the end"},
        UnreadyHost{"IsReadyWithoutAReference", "echo 'ready '; exec sleep 600",
                    "within 1 s; its last line was \"ready \""},
        UnreadyHost{"WritesControlCharacters", "printf '\\033[31mred' >&2; exit 3",
                    "\\x1b[31mred"}),
    [](const auto& host) { return host.param.name; });

// The IOR with another object key: the last name of the manager in the IOR is in the key.
std::string withMissingObject(std::string ior) {
  const std::string name = "546f706f4d616e6167656d656e74";  // "TopoManagement"
  const std::size_t position = ior.rfind(name);
  if (position == std::string::npos) {
    throw std::runtime_error("the IOR does not have the key of the manager: " + ior);
  }
  return ior.replace(position, 2, "58");
}

// An IOR has the type of its object, so narrowing alone does not call the agent.
TEST(Conformance, EndsWithStatus2ForAMissingObjectOfARunningAgent) {
  const integration::RunningAgent agent({"--network", TOPO_NETWORKS "/backbone.json"});
  for (const std::string& reference : {withMissingObject(agent.reference()),
                                       "corbaloc:iiop:1.2@" + agent.endpoint() + "/NoSuchObject"}) {
    const Ended run = conformance({"--agent", reference});
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.out, "");
    EXPECT_THAT(run.err, StartsWith("topo-conformance: the "));
  }
}

TEST(Conformance, ChecksTheNamedRulesAndTheRulesThatTheyNeed) {
  const Ended run = checkRules(TOPO_SAMPLE_HOST, {"unload.iterators", "host.end", "unload.fini"});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_THAT(ruleLines(run.out),
              ElementsAre("host.end", "probe.load", "reload.failed-init", "unload.fini",
                          "unload.iterators", "unload.servants"));
}

TEST(Conformance, DoesNotLoadTheProbeForRulesOfTheModule) {
  const Ended run = checkRules(TOPO_SAMPLE_HOST, {"views.unique", "names.known"});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_THAT(ruleLines(run.out), ElementsAre("views.unique", "names.known"));
}

TEST(Conformance, EndsWithStatus2ForAnUnknownRule) {
  const Ended run = checkRules(TOPO_SAMPLE_HOST, {"views.unique", "no.such-rule"});
  EXPECT_EQ(run.status, 2);
  EXPECT_THAT(run.err, StartsWith("topo-conformance: the rule no.such-rule was not checked: "));
}

TEST(Conformance, ReportsTheSignalOfAHostThatDiesAfterItsConnections) {
  const Ended run = checkRules(faultyHost("cannot_log_long_texts"), {"log.calls"});
  EXPECT_THAT(run.out, HasSubstr("(the process of the host has ended during the check: signal 6 "
                                 "ended it"));
}

// Ends after the first request without an answer: a host that ignores its standard input would
// fail with most rules.
TEST(Conformance, EndsWithStatus2ForAnAgentWithAConsoleWithoutTheOption) {
  for (const char* rule : {"events.created", "log.calls"}) {
    const Ended run = conformance({"--rule", rule, "--timeout", "2", "--", TOPO_AGENTD,
                                   "--endpoint", "127.0.0.1:0", "--store", ":memory:", "--network",
                                   TOPO_NETWORKS "/backbone.json", "--module", "{module}"});
    EXPECT_EQ(run.status, 2) << rule;
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err,
              "topo-conformance: the host does not answer on its standard output, but it has a "
              "console: use --console\n");
  }
}

TEST(Conformance, EndsWithStatus2ForTheConsoleOfAHostWithoutOne) {
  const Ended run = conformance({"--console", "--", TOPO_SAMPLE_HOST, "{module}"});
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err, "topo-conformance: the host has no console: leave out --console\n");
}

// Whether the process whose id is in the file sleeps. A dead process that its parent has not
// fetched does not.
bool sleeps(const std::string& pidFile) {
  std::ifstream status("/proc/" + std::to_string(std::stoi(support::readFile(pidFile))) + "/stat");
  std::string line;
  std::getline(status, line);
  return line.find(") S ") != std::string::npos;
}

TEST(Conformance, LeavesNoProcessOfAHostThatIsNeverReady) {
  const support::TemporaryDirectory directory;
  const std::string file = directory.file("pid");
  const Ended run = conformance({"--timeout", "1", "--", "/bin/sh", "-c",
                                 "sleep 600 & echo $! > " + file + "; wait", "{module}"});
  EXPECT_EQ(run.status, 2);
  EXPECT_THAT(run.err, HasSubstr("printed no line \"ready REFERENCE\" within 1 s"));
  EXPECT_FALSE(sleeps(file));
}

TEST(Conformance, LeavesNoProcessThatTheHostHasStartedInAnotherSession) {
  const support::TemporaryDirectory directory;
  const std::string file = directory.file("pid");
  const Ended run = conformance(
      {"--timeout", "2", "--", "/bin/sh", "-c",
       "setsid /bin/sh -c 'echo $$ > " + file + "; exec sleep 600' & wait", "{module}"});
  EXPECT_EQ(run.status, 2);
  EXPECT_FALSE(sleeps(file));
}

TEST(Conformance, LeavesNoProcessAndNoFileAfterAStopSignal) {
  for (const int signal : {SIGINT, SIGTERM}) {
    const support::TemporaryDirectory directory;
    const std::string file = directory.file("pid");
    const std::string mark = directory.file("mark");
    std::filesystem::create_directory(directory.file("tmp"));
    ASSERT_EQ(mkfifo(mark.c_str(), 0600), 0);
    support::Process run(
        TOPO_CONFORMANCE,
        {"--", "/bin/sh", "-c",
         "setsid /bin/sh -c 'echo $$ > " + file + "; echo > " + mark + "; exec sleep 600' & wait",
         "{module}"},
        {"TMPDIR=" + directory.file("tmp")});
    support::readFile(mark);  // waits for the process in the other session
    run.send(signal);
    const Ended ended = run.wait();
    EXPECT_EQ(ended.status, 2);
    EXPECT_EQ(ended.err, "topo-conformance: stopped by a signal\n");
    EXPECT_FALSE(sleeps(file));
    EXPECT_TRUE(std::filesystem::is_empty(directory.file("tmp")));
  }
}

// The probe's init succeeds again after a check of a failed init that ends early.
TEST(Conformance, StartsTheHostAgainAfterAFailedInitThatIsNotReported) {
  const Ended run = checkRules(faultyHost("reports_success_of_a_failed_init"),
                               {"reload.failed-init", "reload.failed-init-mapped"});
  EXPECT_THAT(run.out, HasSubstr("FAIL  reload.failed-init  "));
  EXPECT_THAT(run.out, HasSubstr("FAIL  reload.failed-init-mapped  "));
  EXPECT_THAT(run.out, Not(HasSubstr("did not become ready"))) << run.out;
}

// The host answers one request after the timeout. The late answer must not count for the next
// request.
TEST(Conformance, RestartsAHostThatDoesNotAnswerARequest) {
  const Ended run = checkRules(faultyHost("answers_late"), {"events.changed", "events.deleted"});
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.out, HasSubstr("FAIL  events.changed  "));
  EXPECT_THAT(run.out, HasSubstr("the host does not answer \"change conformance change\""));
  EXPECT_THAT(lastLine(run.out), HasSubstr(" 1 failed, ")) << run.out;
}

struct ChangedHost {
  std::string name;
  std::string rules;
};

void PrintTo(const ChangedHost& host, std::ostream* out) {
  *out << host.rules;
}

std::vector<ChangedHost> changedHosts(const char* list) {
  std::vector<ChangedHost> hosts;
  std::istringstream entries(list);
  for (std::string entry; std::getline(entries, entry, ',');) {
    const std::size_t colon = entry.find(':');
    hosts.push_back({entry.substr(0, colon), entry.substr(colon + 1)});
  }
  return hosts;
}

class ConformanceOf : public testing::TestWithParam<ChangedHost> {};

TEST_P(ConformanceOf, AFaultyHostFailsWithTheRulesThatItBreaks) {
  const Words rules = words(GetParam().rules);
  const Ended run = checkRules(faultyHost(GetParam().name), rules);
  EXPECT_EQ(run.status, 1) << run.err;
  for (const std::string& rule : rules) {
    EXPECT_THAT(run.out, HasSubstr("FAIL  " + rule + "  "));
  }
  EXPECT_THAT(lastLine(run.out), HasSubstr(' ' + std::to_string(rules.size()) + " failed, "))
      << run.out;
}

INSTANTIATE_TEST_SUITE_P(Hosts, ConformanceOf, testing::ValuesIn(changedHosts(TOPO_FAULTY_HOSTS)),
                         [](const auto& host) { return host.param.name; });

class ConformanceOfAnAllowed : public testing::TestWithParam<ChangedHost> {};

TEST_P(ConformanceOfAnAllowed, HostHasNoFailure) {
  const Ended run = checkHost(faultyHost(GetParam().name));
  EXPECT_EQ(run.status, 0) << run.out << run.err;
  for (const std::string& rule : words(GetParam().rules)) {
    EXPECT_THAT(run.out, HasSubstr("skip  " + rule + "  "));
  }
}

INSTANTIATE_TEST_SUITE_P(Hosts, ConformanceOfAnAllowed,
                         testing::ValuesIn(changedHosts(TOPO_ALLOWED_HOSTS)),
                         [](const auto& host) { return host.param.name; });

}  // namespace
