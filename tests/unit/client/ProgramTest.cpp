#include <arpa/inet.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <netinet/in.h>
#include <pty.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <memory>
#include <nlohmann/json.hpp>
#include <sstream>
#include <stdexcept>

#include "client/base/Utf8.h"
#include "orb/traits.h"
#include "tests/unit/client/support/RunProgram.h"
#include "tests/unit/client/support/WithAgent.h"

namespace topoctl {
namespace {

using testing::AllOf;
using testing::Ge;
using testing::Gt;
using testing::HasSubstr;
using testing::Le;
using testing::StartsWith;

// Exactly one line, with the prefix of every failure.
void expectFailure(const Ended& ended, int status) {
  EXPECT_EQ(ended.status, status);
  EXPECT_EQ(ended.out, "");
  EXPECT_THAT(ended.err, StartsWith("topoctl: "));
  EXPECT_EQ(std::count(ended.err.begin(), ended.err.end(), '\n'), 1) << ended.err;
  EXPECT_THAT(ended.err, testing::EndsWith("\n"));
}

class Descriptor {
 public:
  explicit Descriptor(int descriptor) : descriptor_(descriptor) {
    if (descriptor_ < 0) {
      throw std::runtime_error("no descriptor");
    }
  }
  ~Descriptor() { close(descriptor_); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  int get() const { return descriptor_; }

 private:
  int descriptor_;
};

// A port of this test that never answers. Without `listens` the system refuses connections; with
// `listens` the system accepts them.
class SilentPort {
 public:
  explicit SilentPort(bool listens) : socket_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* const generic = reinterpret_cast<sockaddr*>(&address);
    if (bind(socket_.get(), generic, size) != 0 || (listens && listen(socket_.get(), 16) != 0) ||
        getsockname(socket_.get(), generic, &size) != 0) {
      throw std::runtime_error("no port");
    }
    port_ = ntohs(address.sin_port);
  }

  std::string address() const { return "127.0.0.1:" + std::to_string(port_); }

 private:
  const Descriptor socket_;
  std::uint16_t port_ = 0;
};

// ---- usage

TEST(Program, EndsWith1AndOneLineOnUsageErrors) {
  const std::vector<std::vector<std::string>> commandLines = {
      {},
      {"frobnicate"},
      {"two\nlines"},
      {"topo", "--frobnicate"},
      {"below"},
      {"below", "core", "--name", "A=B"},
      {"tree", "--format", "json"},
      {"topo", "--how-many"},
      {"topo", "--how-many", "-1"},
      {"topo", "--timeout", "soon"},
      {"topo", "--format", "xml"},
      {"topo", "--max-message", "1"},
      {"topo", "--agent", "corbaloc::h:1/X", "--ior-file", "f"},
      {"topo", "--agent", "nonsense"},
      {"topo", "--agent", "IOR:nonsense"},
      {"topo", "--agent", "corbaloc:nonsense"},
      {"topo", "--agent", "corbaname:nonsense"},
      {"topo", "--ior-file", "/no/such/file"},
      {"topo", "--ior-file", "/"},
      {"topo", "--ior-file", "/dev/null"},
  };
  for (const auto& commandLine : commandLines) {
    SCOPED_TRACE(testing::PrintToString(commandLine));
    expectFailure(runProgram(commandLine), 1);
  }
}

TEST(Program, PrintsHelpAndVersion) {
  const Ended version = runProgram({"--version"});
  EXPECT_EQ(version.status, 0);
  EXPECT_EQ(version.out, "topoctl 0.1.0\n");
  EXPECT_EQ(version.err, "");
  for (const auto& arguments :
       std::vector<std::vector<std::string>>{{"--help"}, {"-h"}, {"topo", "--help"}}) {
    const Ended help = runProgram(arguments);
    EXPECT_EQ(help.status, 0);
    EXPECT_THAT(help.out, HasSubstr("Usage: topoctl"));
    EXPECT_EQ(help.err, "");
  }
}

TEST(Program, ReadsTheAgentFromTheEnvironment) {
  const Ended ended = runProgram({"topo"}, {"TOPO_AGENT=nonsense"});
  expectFailure(ended, 1);
  EXPECT_THAT(ended.err,
              StartsWith("topoctl: the reference 'nonsense' of $TOPO_AGENT is malformed: "));
}

// ---- without an agent

TEST(Program, EndsWith2WhenTheConnectionIsRefused) {
  const SilentPort port(false);
  const std::string reference = "corbaloc::" + port.address() + "/TopoManagement";
  const Ended ended = runProgram({"--agent", reference, "topo"});
  expectFailure(ended, 2);
  EXPECT_EQ(ended.err, "topoctl: the agent at '" + reference +
                           "' cannot be reached: connection refused by " + port.address() + "\n");
}

TEST(Program, EndsWith2WhenTheHostIsUnknown) {
  // Two dots: the resolver asks no name server.
  const std::string reference = "corbaloc::no..host:2810/TopoManagement";
  const Ended ended = runProgram({"--agent", reference, "topo"});
  expectFailure(ended, 2);
  EXPECT_THAT(ended.err, StartsWith("topoctl: the agent at '" + reference +
                                    "' cannot be reached: the host 'no..host' is unknown: "));
}

TEST(Program, EndsWith2WhenTheNamingServiceIsUnreachable) {
  const SilentPort port(false);
  const std::string reference = "corbaname::" + port.address() + "#TopoManagement";
  const Ended ended = runProgram({"--agent", reference, "topo"});
  expectFailure(ended, 2);
  EXPECT_EQ(ended.err, "topoctl: the naming service of '" + reference +
                           "' cannot be reached: connection refused by " + port.address() + "\n");
}

TEST(Program, EndsWith2WhenTheAgentDoesNotAnswerInTime) {
  const SilentPort port(true);
  const std::string reference = "corbaloc::" + port.address() + "/TopoManagement";
  const Ended ended = runProgram({"--agent", reference, "--timeout", "0.2", "topo"});
  expectFailure(ended, 2);
  EXPECT_EQ(ended.err, "topoctl: the agent at '" + reference +
                           "' did not answer within 0.2 seconds; raise --timeout\n");
}

// ---- with an agent

class ProgramWithAgent : public WithAgent {
 protected:
  Ended run(const std::vector<std::string>& arguments, int out = kCaptured) {
    return runAt(agentReference(), arguments, out);
  }

  Ended runAt(const std::string& reference, std::vector<std::string> arguments,
              int out = kCaptured) {
    script.settle();
    arguments.insert(arguments.begin(), {"--agent", reference});
    return runProgram(arguments, {}, out);
  }
};

TEST_F(ProgramWithAgent, PrintsTheSameRecordsForEveryBatchSize) {
  script.nodes = makeNodes(7);
  const std::string expected = output(options("topo"));
  for (const char* const howMany : {"0", "1", "6", "7", "8", "4294967295"}) {
    const Ended ended = run({"topo", "--format", "json", "--how-many", howMany});
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.out, expected) << howMany;
    EXPECT_EQ(ended.err, "");
  }
}

TEST_F(ProgramWithAgent, PrintsTheSameLinksForEveryBatchSize) {
  script.links = makeLinks(7);
  const std::string expected = output(options("clock-links"));
  for (const char* const howMany : {"0", "1", "6", "7", "8", "4294967295"}) {
    const Ended ended = run({"clock-links", "--format", "json", "--how-many", howMany});
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.out, expected) << howMany;
    EXPECT_EQ(ended.err, "");
  }
}

TEST_F(ProgramWithAgent, SendsANameOfManyPairs) {
  std::vector<std::string> arguments = {"below"};
  std::string name;
  for (int i = 0; i < 10000; ++i) {
    const std::string number = std::to_string(i);
    arguments.insert(arguments.end(), {"--name", "Z\u00fcrich=" + number});
    name += "(Z\u00fcrich," + number + ")";
  }
  EXPECT_EQ(run(arguments).status, 0);
  EXPECT_THAT(script.calls(), testing::ElementsAre("below(" + name + ", 1000)"));
}

TEST_F(ProgramWithAgent, PrintsAnyTextOfTheAgent) {
  script.nodes = makeNodes(2);
  script.nodes[0].nativeEMSName = "Z\u00fcrich \u6771\u4eac \U0001F600";
  script.nodes[1].nativeEMSName = std::string(100000, 'x').c_str();
  const Ended ended = run({"topo", "--format", "json"});
  EXPECT_EQ(ended.status, 0);
  const auto json = nlohmann::json::parse(ended.out);
  EXPECT_EQ(json[0]["nativeEMSName"], script.nodes[0].nativeEMSName.in());
  EXPECT_EQ(json[1]["nativeEMSName"], script.nodes[1].nativeEMSName.in());
}

TEST_F(ProgramWithAgent, ReachesTheAgentByAnyFormOfCorbaloc) {
  script.nodes = makeNodes(1);
  script.nodes[0].nativeEMSName = "\u6771\u4eac";
  const SilentPort nobody(false);
  const std::string there = address() + "/TopoManagement";
  const std::string silent = ":" + nobody.address() + ",";
  const std::vector<std::string> forms = {":" + there, "iiop:" + there, "iiop:1.2@" + there,
                                          silent + ":" + there, silent + "iiop:1.2@" + there};
  for (const std::string& addresses : forms) {
    for (const char* const scheme : {"corbaloc:", "CorbaLoc:"}) {
      const Ended ended = runAt(std::string(scheme).append(addresses), {"--format", "csv", "topo"});
      EXPECT_EQ(ended.status, 0) << addresses << ended.err;
      EXPECT_THAT(ended.out, HasSubstr(",\u6771\u4eac,"));
    }
  }
}

TEST_F(ProgramWithAgent, EndsWith3OnAnExceptionOfTheAgent) {
  script.onView = [] {
    throw globaldefs::ProcessingFailureException(globaldefs::EXCPT_INVALID_INPUT, "no way");
  };
  for (const char* const command : {"topo", "capabilities"}) {
    const Ended ended = run({command});
    expectFailure(ended, 3);
    EXPECT_EQ(ended.err, "topoctl: the agent refused: EXCPT_INVALID_INPUT: no way\n");
  }
}

TEST_F(ProgramWithAgent, EndsWith4OnAnyOtherFailure) {
  script.onView = [] { throw CORBA::NO_RESOURCES(); };
  const Ended ended = run({"topo"});
  expectFailure(ended, 4);
  EXPECT_EQ(ended.err,
            "topoctl: a call to the agent at '" + agentReference() + "' failed: NO_RESOURCES\n");
}

TEST_F(ProgramWithAgent, EndsWith2WhenTheObjectDoesNotExist) {
  const std::string reference = "corbaloc::" + address() + "/SomethingElse";
  const Ended ended = runAt(reference, {"topo"});
  expectFailure(ended, 2);
  EXPECT_EQ(ended.err,
            "topoctl: the agent at '" + reference + "' answers, but has no object of this name\n");
}

// The reload itself takes a moment, so the first attempts of the program fail.
TEST_F(ProgramWithAgent, RepeatsAViewThatMeetsAReload) {
  script.nodes = makeNodes(3);
  const std::string expected = output(options("topo"));
  script.onView = [rejections = 2]() mutable {
    if (rejections-- > 0) {
      throw CORBA::TRANSIENT(CORBA::OMGVMCID | 1, CORBA::COMPLETED_NO);
    }
  };
  const Ended ended = run({"topo", "--format", "json"});
  EXPECT_EQ(ended.status, 0) << ended.err;
  EXPECT_EQ(ended.out, expected);
}

// Limits below, at and above the boundaries of the fragments of a large message.
TEST_F(ProgramWithAgent, NamesTheOptionForAMessageOverItsLimit) {
  script.nodes = makeNodes(1000);
  for (const char* const limit : {"8192", "8193", "10000", "16383", "16384", "16400", "65536"}) {
    const Ended ended = run({"topo", "--max-message", limit});
    expectFailure(ended, 4);
    EXPECT_EQ(ended.err,
              std::string("topoctl: a message is over the size limit: ask for less at once with "
                          "--how-many (now 1000), or raise --max-message of topoctl (now ") +
                  limit + ") and of the agent, or --max-request of the agent\n");
  }
  EXPECT_EQ(run({"topo", "--max-message", "8192", "--how-many", "10"}).status, 0);
}

TEST_F(ProgramWithAgent, DestroysTheIteratorWhenABatchIsTooLarge) {
  script.nodes = makeNodes(1001);
  const Ended ended = run({"topo", "--max-message", "8192", "--how-many", "0"});
  expectFailure(ended, 4);
  EXPECT_THAT(ended.err, StartsWith("topoctl: a message is over the size limit: ask for less at "
                                    "once with --how-many (now 1000)"));
  EXPECT_THAT(script.calls(), testing::ElementsAre("topo(0)", "next_n(1000)", "destroy"));
}

TEST_F(ProgramWithAgent, EndsWith5WhenItsOutputCannotBeWritten) {
  script.nodes = makeNodes(7);
  const Descriptor full(open("/dev/full", O_WRONLY | O_CLOEXEC));
  for (const char* const format : {"table", "json", "csv"}) {
    const Ended ended = run({"topo", "--format", format}, full.get());
    expectFailure(ended, 5);
    EXPECT_EQ(ended.err, "topoctl: the output cannot be written: No space left on device\n");
  }
  EXPECT_EQ(run({"--help"}, full.get()).status, 5);
}

TEST_F(ProgramWithAgent, EndsSilentlyWhenTheReaderOfItsOutputHasClosed) {
  std::array<int, 2> ends{};
  ASSERT_EQ(pipe2(ends.data(), O_CLOEXEC), 0);
  close(ends[0]);
  const Descriptor writeEnd(ends[1]);
  const Ended ended = run({"topo"}, writeEnd.get());
  EXPECT_EQ(ended.status, 141);
  EXPECT_EQ(ended.err, "");
}

TEST_F(ProgramWithAgent, EndsWith5WhenItsOutputIsClosed) {
  const Ended ended = run({"topo"}, kClosed);
  expectFailure(ended, 5);
  EXPECT_EQ(ended.err, "topoctl: the output cannot be written: Bad file descriptor\n");
}

// ---- on a terminal

class Terminal {
 public:
  explicit Terminal(unsigned short columns) {
    winsize size{};
    size.ws_row = 24;
    size.ws_col = columns;
    int main = -1;
    int side = -1;
    if (openpty(&main, &side, nullptr, nullptr, &size) != 0) {
      throw std::runtime_error("no terminal");
    }
    main_ = std::make_unique<Descriptor>(main);
    side_ = std::make_unique<Descriptor>(side);
  }

  int side() const { return side_->get(); }

  // The widest line that programs have written; the text must fit into the terminal's buffer.
  std::size_t widestLine() const {
    std::array<char, 4096> text{};
    const ssize_t size = read(main_->get(), text.data(), text.size());
    std::istringstream lines(
        std::string(text.data(), size < 0 ? 0 : static_cast<std::size_t>(size)));
    std::size_t widest = 0;
    for (std::string line; std::getline(lines, line);) {
      widest = std::max(widest, displayWidth(line.substr(0, line.find('\r'))));
    }
    return widest;
  }

 private:
  std::unique_ptr<Descriptor> main_;
  std::unique_ptr<Descriptor> side_;
};

TEST_F(ProgramWithAgent, FitsTablesToTheTerminal) {
  script.nodes = makeNodes(1);
  script.nodes[0].nativeEMSName = std::string(500, 'x').c_str();
  const Terminal terminal(90);
  EXPECT_EQ(run({"topo"}, terminal.side()).status, 0);
  EXPECT_THAT(terminal.widestLine(), AllOf(Ge(80U), Le(90U)));
  EXPECT_EQ(run({"topo", "--wide"}, terminal.side()).status, 0);
  EXPECT_GT(terminal.widestLine(), 500U);
  script.settle();
  EXPECT_EQ(
      runProgram({"--agent", agentReference(), "topo"}, {"COLUMNS=100"}, terminal.side()).status,
      0);
  EXPECT_THAT(terminal.widestLine(), AllOf(Gt(90U), Le(100U)));
}

TEST_F(ProgramWithAgent, PrintsWholeCellsWithoutATerminal) {
  script.nodes = makeNodes(1);
  script.nodes[0].nativeEMSName = std::string(500, 'x').c_str();
  script.settle();
  const Ended ended = runProgram({"--agent", agentReference(), "topo"}, {"COLUMNS=40"});
  EXPECT_THAT(ended.out, HasSubstr(std::string(500, 'x')));
}

// An agent with a low limit for its own messages.
class ProgramWithStrictAgent : public ProgramWithAgent {
 protected:
  static void SetUpTestSuite() {
    orb::Options small;
    small.maxMessageBytes = orb::kMinMaxMessageBytes;
    startServer(small);
  }
};

TEST_F(ProgramWithStrictAgent, NamesTheOptionForAMessageOverTheLimitOfTheAgent) {
  script.nodes = makeNodes(500);
  const Ended ended = run({"topo"});
  expectFailure(ended, 4);
  if (orb::kRefusesLargeAnswers) {
    EXPECT_EQ(ended.err,
              "topoctl: a message is over the size limit: ask for less at once with --how-many "
              "(now 1000), or raise --max-message of topoctl (now 268435456) and of the agent, or "
              "--max-request of the agent\n");
  } else {
    EXPECT_EQ(ended.err, "topoctl: an answer of the agent at '" + agentReference() +
                             "' broke off: the agent ended, or the answer is over the agent's size "
                             "limit; ask for less at once with --how-many (now 1000), or raise "
                             "--max-message of the agent\n");
  }
  EXPECT_EQ(run({"topo", "--how-many", "10"}).status, 0);
}

}  // namespace
}  // namespace topoctl
