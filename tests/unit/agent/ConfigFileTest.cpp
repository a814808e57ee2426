// The configuration file of the agent.

#include "agent/ConfigFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "agent/Options.h"
#include "tests/support/TemporaryDirectory.h"

namespace {

using agent::ConfigLine;
using agent::mostSimilarName;
using support::TemporaryDirectory;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

MATCHER_P3(IsLine, number, name, value, "") {
  return arg.number == static_cast<std::size_t>(number) && arg.name == name && arg.value == value;
}

class ConfigFile : public testing::Test {
 protected:
  std::vector<ConfigLine> read(const std::string& text) {
    return agent::readConfigFile(directory_.write("agent.conf", text));
  }

  // The reason against a file with this text, without the directory of the file.
  std::string refusal(const std::string& text) {
    try {
      read(text);
      return "";
    } catch (const agent::UsageError& failure) {
      return withoutDirectory(failure.what());
    }
  }

  // The reason against options from a file with this text.
  std::string refusalOfOptions(const std::string& text) {
    const std::string file = directory_.write("agent.conf", text);
    const std::vector<const char*> argv{"topo-agentd", "--config", file.c_str()};
    try {
      agent::parseOptions(static_cast<int>(argv.size()), argv.data());
      return "";
    } catch (const agent::UsageError& failure) {
      return withoutDirectory(failure.what());
    }
  }

  agent::Options options(const std::string& text, const std::vector<const char*>& further = {}) {
    const std::string file = directory_.write("agent.conf", text);
    std::vector<const char*> argv{"topo-agentd", "--config", file.c_str()};
    argv.insert(argv.end(), further.begin(), further.end());
    return agent::parseOptions(static_cast<int>(argv.size()), argv.data()).value();
  }

  TemporaryDirectory directory_;

 private:
  std::string withoutDirectory(const std::string& text) const {
    const std::string prefix = directory_.path().string() + "/";
    EXPECT_THAT(text, StartsWith(prefix));
    return text.substr(prefix.size());
  }
};

TEST_F(ConfigFile, GivesNamesAndValuesWithTheirLines) {
  EXPECT_THAT(read("# comment\n\nstore = \"a b.db\"\n ; comment\nqueue=5\r\n  test-switch\n"),
              ElementsAre(IsLine(3, "store", "a b.db"), IsLine(5, "queue", "5"),
                          IsLine(6, "test-switch", std::nullopt)));
  EXPECT_THAT(read(""), testing::IsEmpty());
}

TEST_F(ConfigFile, MayHaveACommentAfterAValue) {
  EXPECT_THAT(read("store = a # here\n"), ElementsAre(IsLine(1, "store", "a")));
}

TEST_F(ConfigFile, MayHaveAnyCharacterInQuotes) {
  EXPECT_THAT(
      read("store = \"a # b, c.db\" # here\nems-name = 'a \"b\" = \\c'\nior-file=\"a#b\"#c\n"),
      ElementsAre(IsLine(1, "store", "a # b, c.db"), IsLine(2, "ems-name", "a \"b\" = \\c"),
                  IsLine(3, "ior-file", "a#b")));
}

TEST_F(ConfigFile, RejectsUnbalancedQuotes) {
  EXPECT_EQ("agent.conf:1: the value of 'store' has no closing quote", refusal("store = \"a.db\n"));
  EXPECT_EQ("agent.conf:1: the value of 'store' has no closing quote",
            refusal("store = 'a.db\"\n"));
  EXPECT_EQ("agent.conf:1: the value of 'store' has no closing quote", refusal("store = \"\n"));
  EXPECT_EQ("agent.conf:2: text follows the closing quote of the value of 'store'",
            refusal("\nstore = \"a\"b\"\n"));
}

TEST_F(ConfigFile, RejectsAnEmptyValue) {
  for (const std::string value : {"", "   ", "\"\"", "''", "# comment"}) {
    EXPECT_EQ("agent.conf:1: 'no-console' has no value", refusal("no-console = " + value + "\n"));
  }
}

TEST_F(ConfigFile, RejectsNulCharacters) {
  EXPECT_EQ("agent.conf:2: a NUL character",
            refusal(std::string("queue = 5\nstore = \"a\0b\"\n", 24)));
}

TEST_F(ConfigFile, MayEndWithoutANewline) {
  EXPECT_THAT(read("queue = 5"), ElementsAre(IsLine(1, "queue", "5")));
}

TEST_F(ConfigFile, RejectsLinesThatAreNoOptions) {
  EXPECT_EQ("agent.conf:2: there is no option 'x'", refusalOfOptions("queue = 5\nx\n"));
  EXPECT_EQ("agent.conf:2: 'queue 5' is not NAME = VALUE", refusal("store=a\nqueue 5\n"));
  EXPECT_EQ("agent.conf:1: '=' is not NAME = VALUE", refusal("=\n"));
  EXPECT_EQ("agent.conf:1: '= 55' is not NAME = VALUE", refusal("= 55\n"));
}

TEST_F(ConfigFile, RejectsSections) {
  EXPECT_EQ("agent.conf:2: a section; each line is NAME = VALUE",
            refusal("queue = 5\n[limits]\nqueue = 6\n"));
}

TEST_F(ConfigFile, RejectsSeveralValues) {
  EXPECT_THAT(refusal("store = a b\n"),
              StartsWith("agent.conf:1: 'store' has more than one value"));
  EXPECT_THAT(refusal("store = [a, b]\n"),
              StartsWith("agent.conf:1: 'store' has more than one value"));
}

TEST_F(ConfigFile, RejectsARepeatedName) {
  EXPECT_EQ("agent.conf:3: 'queue' is already in line 1", refusal("queue = 5\n\nqueue = 6\n"));
}

TEST_F(ConfigFile, MayHaveSeveralEndpoints) {
  EXPECT_EQ(2U, options("endpoint = \"127.0.0.1:0\"\nendpoint = \"unix:/a\"\n").endpoints.size());
  const agent::Options given = options("endpoint = \"unix:/a\"\n", {"--endpoint", "host:12"});
  ASSERT_EQ(1U, given.endpoints.size());
  EXPECT_EQ("host", given.endpoints.front().host);
}

TEST_F(ConfigFile, MayHaveOneMebibyte) {
  const std::size_t largest = std::size_t{1} << 20;
  EXPECT_THAT(read(std::string(largest, '\n')), testing::IsEmpty());
  EXPECT_EQ("agent.conf: is larger than 1 MiB", refusal(std::string(largest + 1, '\n')));
}

TEST_F(ConfigFile, MustBeAReadableFile) {
  const auto reasonAgainst = [](const std::string& file) -> std::string {
    try {
      agent::readConfigFile(file);
      return "";
    } catch (const agent::UsageError& failure) {
      return failure.what();
    }
  };
  EXPECT_EQ(directory_.file("none") + ": No such file or directory",
            reasonAgainst(directory_.file("none")));
  EXPECT_EQ(directory_.path().string() + ": is a directory", reasonAgainst(directory_.path()));
}

TEST_F(ConfigFile, RejectsAnUnknownOptionAndSuggestsASimilarOne) {
  EXPECT_EQ("agent.conf:2: there is no option 'no-consol', did you mean 'no-console'?",
            refusalOfOptions("# comment\nno-consol = true\n"));
  EXPECT_EQ("agent.conf:1: there is no option 'storre', did you mean 'store'?",
            refusalOfOptions("storre = \"x.db\"\n"));
  EXPECT_EQ("agent.conf:1: there is no option 'colour'", refusalOfOptions("colour = red\n"));
  EXPECT_EQ("agent.conf:1: there is no option 'a.store', did you mean 'store'?",
            refusalOfOptions("a.store = x\n"));
}

TEST_F(ConfigFile, RejectsOptionsThatOnlyTheCommandLineMayHave) {
  for (const std::string name : {"config", "check-config", "help", "version"}) {
    EXPECT_THAT(refusalOfOptions(name + " = true\n"),
                StartsWith("agent.conf:1: there is no option '" + name + "'"));
  }
}

TEST_F(ConfigFile, NamesTheLineOfAnInvalidValue) {
  EXPECT_THAT(refusalOfOptions("queue = 5\nlog-level = 9\n"),
              testing::AllOf(StartsWith("agent.conf:2: --log-level: "), HasSubstr("9")));
  EXPECT_THAT(refusalOfOptions("endpoint = here\n"),
              StartsWith("agent.conf:1: --endpoint: 'here' is not HOST:PORT, "));
  EXPECT_THAT(refusalOfOptions("no-console = perhaps\n"), StartsWith("agent.conf:1: "));
}

TEST_F(ConfigFile, RejectsAnOptionWithoutAValue) {
  EXPECT_THAT(refusalOfOptions("queue = 5\nstore\n"),
              testing::AllOf(StartsWith("agent.conf:2: --store: "), HasSubstr("PATH")));
  EXPECT_THAT(refusalOfOptions("endpoint # none\n"), StartsWith("agent.conf:1: --endpoint: "));
}

TEST_F(ConfigFile, SetsOptionsAndFlags) {
  const agent::Options options = this->options(
      "store = \"my net.db\"\nno-console = true\ntest-switch\nskip-store-check = "
      "false\niterator-timeout = 1.5\n");
  EXPECT_EQ("my net.db", options.store);
  EXPECT_FALSE(options.console);
  EXPECT_TRUE(options.testSwitch);
  EXPECT_TRUE(options.checkStore);
  EXPECT_EQ(1.5, options.iteratorTimeoutSeconds);
  EXPECT_FALSE(options.checkOnly);
}

TEST_F(ConfigFile, YieldsToTheCommandLine) {
  const agent::Options options =
      this->options("queue = 5\nlog-level = 2\n", {"--queue", "7", "--check-config"});
  EXPECT_EQ(7U, options.queueLimit);
  EXPECT_EQ(2, options.logLevel);
  EXPECT_TRUE(options.checkOnly);
}

TEST(MostSimilarName, DiffersInAtMostAThird) {
  const std::vector<std::string> names{"queue", "queue-memory", "store"};
  EXPECT_EQ("queue", mostSimilarName("queu", names));
  EXPECT_EQ("queue", mostSimilarName("qeue", names));
  EXPECT_EQ("queue-memory", mostSimilarName("queue_memory", names));
  EXPECT_EQ("store", mostSimilarName("storre", names));
  EXPECT_EQ("", mostSimilarName("stxxx", names));
  EXPECT_EQ("abc", mostSimilarName("abx", {"abc"}));
  EXPECT_EQ("abc", mostSimilarName("abcd", {"abc"}));
  EXPECT_EQ("abc", mostSimilarName("abx", {"abc", "abd"}));
  EXPECT_EQ("", mostSimilarName("", names));
  EXPECT_EQ("", mostSimilarName(std::string(1000000, 'q'), names));
}

}  // namespace
