#include "client/commandline/Options.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "client/base/Failure.h"

namespace topoctl {
namespace {

using std::chrono::milliseconds;
using testing::HasSubstr;
using testing::StartsWith;

Options parsed(std::vector<std::string> arguments, const std::string& environment = "") {
  arguments.emplace_back("topo");
  return parseOptions(arguments, environment);
}

// The text of a usage error.
std::string usageError(const std::vector<std::string>& arguments) {
  try {
    parseOptions(arguments, "");
    return "no error";
  } catch (const Failure& failure) {
    EXPECT_EQ(failure.code(), ExitCode::kUsage);
    return failure.what();
  }
}

TEST(Options, HaveDefaults) {
  const Options options = parseOptions({"topo"}, "");
  EXPECT_EQ(options.access.reference, "corbaloc::127.0.0.1:2810/TopoManagement");
  EXPECT_EQ(options.access.iorFile, std::nullopt);
  EXPECT_EQ(options.access.howMany, 1000U);
  EXPECT_EQ(options.format, Format::kTable);
  EXPECT_EQ(options.access.callTimeout, milliseconds(30000));
  EXPECT_EQ(options.access.maxMessageBytes, 268435456U);
  EXPECT_EQ(options.command, "topo");
  EXPECT_EQ(options.notice, "");
}

TEST(Options, AreReadBeforeAndAfterTheCommand) {
  for (const auto& options :
       {parseOptions({"--format", "csv", "--how-many", "7", "capabilities"}, ""),
        parseOptions({"capabilities", "--format=csv", "--how-many=7"}, ""),
        parseOptions({"--how-many", "7", "capabilities", "--format", "csv"}, "")}) {
    EXPECT_EQ(options.format, Format::kCsv);
    EXPECT_EQ(options.access.howMany, 7U);
    EXPECT_EQ(options.command, "capabilities");
  }
}

TEST(Options, UseTheLastOfARepeatedOption) {
  EXPECT_EQ(parsed({"--format", "csv", "--format", "json"}).format, Format::kJson);
  EXPECT_EQ(parsed({"--how-many", "x", "--how-many", "5"}).access.howMany, 5U);
}

TEST(Options, ReadTheAgentFromTheEnvironmentUnlessAnOptionNamesTheAgent) {
  EXPECT_EQ(parsed({}, "corbaloc::far:1/X").access.reference, "corbaloc::far:1/X");
  EXPECT_EQ(parsed({"--agent", "corbaloc::near:1/X"}, "corbaloc::far:1/X").access.reference,
            "corbaloc::near:1/X");
  EXPECT_EQ(parsed({"--ior-file", "/the/file"}, "corbaloc::far:1/X").access.iorFile, "/the/file");
  EXPECT_TRUE(parsed({}, "corbaloc::far:1/X").access.isFromEnvironment);
  EXPECT_FALSE(parsed({"--agent", "x"}, "corbaloc::far:1/X").access.isFromEnvironment);
}

TEST(Options, RejectTwoAgents) {
  EXPECT_EQ(usageError({"--agent", "corbaloc::near:1/X", "--ior-file", "/the/file", "topo"}),
            "--agent and --ior-file exclude each other");
}

TEST(Options, AcceptEveryUnsigned32BitHowMany) {
  EXPECT_EQ(parsed({"--how-many", "0"}).access.howMany, 0U);
  EXPECT_EQ(parsed({"--how-many", "4294967295"}).access.howMany, 4294967295U);
}

TEST(Options, RejectOtherTextsAsHowMany) {
  for (const std::string text : {"4294967296", "99999999999999999999", "-1", "+1", "1.5", "1e3",
                                 "0x10", "ten", "1 ", " 1"}) {
    EXPECT_EQ(usageError({"--how-many", text, "topo"}),
              "--how-many: '" + text + "' is not a number from 0 to 4294967295");
  }
  EXPECT_EQ(usageError({"--how-many", "", "topo"}),
            "--how-many: '' is not a number from 0 to 4294967295");
}

TEST(Options, AcceptFractionsOfSecondsAsTimeout) {
  EXPECT_EQ(parsed({"--timeout", "0"}).access.callTimeout, milliseconds(0));
  EXPECT_EQ(parsed({"--timeout", "2"}).access.callTimeout, milliseconds(2000));
  EXPECT_EQ(parsed({"--timeout", "0.25"}).access.callTimeout, milliseconds(250));
  EXPECT_EQ(parsed({"--timeout", "1000000"}).access.callTimeout, milliseconds(1000000000));
}

TEST(Options, RoundATinyTimeoutUpToAMillisecond) {
  EXPECT_EQ(parsed({"--timeout", "0.0000001"}).access.callTimeout, milliseconds(1));
}

TEST(Options, RejectOtherTextsAsTimeout) {
  for (const std::string text :
       {"-1", "-0", "1000000.1", "1e9", "nan", "inf", "soon", "1s", "", "0,5"}) {
    EXPECT_EQ(usageError({"--timeout", text, "topo"}),
              "--timeout: '" + text + "' is not a number of seconds from 0 to 1000000");
  }
}

TEST(Options, CheckTheRangeOfTheLargestMessage) {
  EXPECT_EQ(parsed({"--max-message", "8192"}).access.maxMessageBytes, 8192U);
  EXPECT_EQ(parsed({"--max-message", "4294967295"}).access.maxMessageBytes, 4294967295U);
  for (const std::string text : {"8191", "0", "4294967296", "1M"}) {
    EXPECT_EQ(usageError({"--max-message", text, "topo"}),
              "--max-message: '" + text + "' is not a number from 8192 to 4294967295");
  }
}

TEST(Options, RejectAnUnknownFormat) {
  EXPECT_EQ(parsed({"--format", "table"}).format, Format::kTable);
  EXPECT_EQ(usageError({"--format", "xml", "topo"}), "--format: 'xml' is none of table, json, csv");
  EXPECT_EQ(usageError({"--format", "JSON", "topo"}),
            "--format: 'JSON' is none of table, json, csv");
}

const std::string kHelp = "; \"topoctl --help\" lists the commands";

TEST(Options, RejectAMissingUnknownOrSecondCommand) {
  EXPECT_EQ(usageError({}), "a command is missing" + kHelp);
  EXPECT_EQ(usageError({"--format", "json"}), "a command is missing" + kHelp);
  EXPECT_EQ(usageError({"frobnicate"}), "'frobnicate' is not a command" + kHelp);
  EXPECT_EQ(usageError({"create", "x"}), "'create' is not a command" + kHelp);
  for (const char* const second : {"capabilities", "topo"}) {
    EXPECT_EQ(usageError({"topo", second}),
              "'" + std::string(second) + "' is not expected here; usage: topoctl topo");
  }
}

TEST(Options, RejectAGroupWithoutACommandOrWithAnUnknownCommand) {
  const std::string commands = "; the commands are: module reload";
  EXPECT_EQ(usageError({"module"}), "module: a command is missing" + commands);
  EXPECT_EQ(usageError({"module", "--format", "json"}), "module: a command is missing" + commands);
  EXPECT_EQ(usageError({"module", "frobnicate"}), "'frobnicate' is not a command" + commands);
  EXPECT_EQ(usageError({"module", "topo"}), "'topo' is not a command" + commands);
}

TEST(Options, ShowOnlyTheUsageOfTheTypedCommand) {
  EXPECT_EQ(usageError({"backup"}), "backup: a FILE is missing; usage: topoctl backup FILE");
  EXPECT_EQ(usageError({"below"}),
            "below: an ID is missing, or a whole name given with --name; usage: topoctl below ID | "
            "--name NAME=VALUE...");
  EXPECT_THAT(
      usageError({"node", "create", "7"}),
      StartsWith("node create: --name is missing; usage: topoctl node create ID --name NAME "
                 "[--parent ID] "));
  EXPECT_EQ(usageError({"topo", "--how-many", "x"}),
            "--how-many: 'x' is not a number from 0 to 4294967295");
}

TEST(Options, ShowTheOptionsOfTheTypedCommandInItsUsage) {
  EXPECT_EQ(usageError({"node", "change", "7"}),
            "node change: an option is missing; usage: topoctl node change ID [--params A,B] "
            "[--attribute NAME=VALUE]... [--no-attributes]");
  EXPECT_EQ(usageError({"import"}),
            "import: a FILE is missing; usage: topoctl import FILE [--replace] [--dry-run] "
            "[--first-element N]");
  EXPECT_EQ(usageError({"clock-link", "delete"}),
            "clock-link delete: an ID is missing; usage: topoctl clock-link delete ID");
}

TEST(Options, AreReadBeforeAndAfterACommandOfTwoWords) {
  for (const auto& options : {parseOptions({"--format", "csv", "module", "reload"}, ""),
                              parseOptions({"module", "--format", "csv", "reload"}, ""),
                              parseOptions({"module", "reload", "--format", "csv"}, "")}) {
    EXPECT_EQ(options.format, Format::kCsv);
    EXPECT_EQ(options.command, "module reload");
  }
}

TEST(Options, RejectAnUnknownOptionAndAMissingValue) {
  EXPECT_EQ(usageError({"--frobnicate", "topo"}),
            "'--frobnicate' is not expected here; usage: topoctl topo");
  EXPECT_EQ(usageError({"topo", "--format"}),
            "--format: FORMAT is missing: table (unless given), json or csv; usage: topoctl topo");
  EXPECT_THAT(usageError({"--timeout"}), StartsWith("--timeout: S is missing: Seconds that "));
  EXPECT_THAT(usageError({"node", "create", "7", "--name"}),
              StartsWith("--name: NAME is missing: "));
}

TEST(Options, ReadTheStyleOfTables) {
  EXPECT_FALSE(parsed({}).wide);
  EXPECT_TRUE(parsed({}).table.header);
  const Options options = parseOptions({"--wide", "topo", "--no-header"}, "");
  EXPECT_TRUE(options.wide);
  EXPECT_FALSE(options.table.header);
}

TEST(Options, ReturnHelpAndVersionAsNotices) {
  EXPECT_EQ(parseOptions({"--version"}, "").notice, "topoctl 0.1.0\n");
  const std::string help = parseOptions({"--help"}, "").notice;
  EXPECT_THAT(help, StartsWith("Shows what a topology agent manages.\nUsage: topoctl "));
  for (const char* const expected :
       {"--agent REF", "--ior-file PATH", "--how-many N", "--format FORMAT", "--timeout S",
        "--max-message BYTES", "--help", "--version", "topo ", "capabilities "}) {
    EXPECT_THAT(help, HasSubstr(expected));
  }
}

}  // namespace
}  // namespace topoctl
