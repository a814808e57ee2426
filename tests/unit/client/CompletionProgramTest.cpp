// The completion scripts in real shells, with a fake agent.

#include <gmock/gmock.h>

#include <filesystem>
#include <string>
#include <vector>

#include "client/base/ShellLine.h"
#include "tests/support/Process.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/unit/client/support/RunProgram.h"
#include "tests/unit/client/support/WithAgent.h"

namespace topoctl {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  for (std::size_t begin = 0; begin < text.size();) {
    const std::size_t end = text.find('\n', begin);
    lines.push_back(text.substr(begin, end - begin));
    begin = end == std::string::npos ? text.size() : end + 1;
  }
  return lines;
}

class CompletionProgram : public WithAgent {
 protected:
  CompletionProgram() {
    directory_.write("bash.sh", runProgram({"completion", "bash"}).out);
    directory_.write("zsh.sh", runProgram({"completion", "zsh"}).out);
    directory_.write("driver.sh", R"(
      source "$1"
      COMP_LINE=$2
      COMP_POINT=${#2}
      _topoctl "$TOPOCTL" "$3" ""
      printf '%s\n' "${COMPREPLY[@]}"
    )");
  }

  void addNode(const std::string& id) {
    const CORBA::ULong count = script.nodes.length();
    script.nodes.length(count + 1);
    script.nodes[count] = makeNode(id);
    script.settle();
  }

  // Returns the completions of bash for a line. replaced: the text after the last word break.
  std::vector<std::string> offered(const std::string& line, const std::string& replaced) {
    const support::Ended ended = support::run(
        "/bin/bash",
        {"--norc", directory_.file("driver.sh"), directory_.file("bash.sh"), line, replaced},
        {"TOPOCTL=" TOPOCTL_PROGRAM, "TOPO_AGENT=" + agentReference(),
         "TRAP=" + directory_.file("trap")});
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.err, "");
    return linesOf(ended.out);
  }

  // The words that bash reads in a line.
  std::vector<std::string> wordsOf(const std::string& line) {
    return linesOf(support::run("/bin/bash", {"--norc", "-c", "printf '%s\\n' " + line}, {}).out);
  }

  support::TemporaryDirectory directory_;
};

TEST_F(CompletionProgram, CompletesCommandsAndOptionsInBash) {
  EXPECT_THAT(offered("topoctl node ren", "ren"), ElementsAre("rename"));
  EXPECT_THAT(offered("topoctl --format j", "j"), ElementsAre("json"));
  EXPECT_THAT(offered("topoctl --format=j", "j"), ElementsAre("json"));
  EXPECT_THAT(offered("topoctl watch --co", "--co"), ElementsAre("--count"));
}

TEST_F(CompletionProgram, AsksTheAgentForIds) {
  addNode("core");
  addNode("cost");
  addNode("east");
  EXPECT_THAT(offered("topoctl node delete co", "co"), ElementsAre("core", "cost"));
  EXPECT_THAT(offered("topoctl get TopoSubnetwork=ea", "ea"), ElementsAre("east"));
  EXPECT_THAT(offered("topoctl node create x --parent=ea", "ea"), ElementsAre("east"));
  EXPECT_THAT(offered("topoctl below 'ea", "ea"), ElementsAre("east"));
}

TEST_F(CompletionProgram, QuotesIdsSoThatBashReadsThemAsTheyAre) {
  const std::vector<std::string> ids = {"a b",
                                        "b$(touch $TRAP)",
                                        "c`touch $TRAP`",
                                        "d;touch $TRAP",
                                        "e'b",
                                        "f\"b",
                                        "g\\b",
                                        "h|b>c<d&e",
                                        "i*?[x]{1,2}",
                                        "j#b~!c",
                                        "k${HOME}b",
                                        "lM\xc3\xbcnchen",
                                        "m\xe4\xb8\xad"};
  for (const std::string& id : ids) {
    addNode(id);
  }
  for (const std::string& id : ids) {
    const std::string begin = id.substr(0, 1);
    for (const std::string open : {"", "'", "\""}) {
      const std::string line = "topoctl node delete " + open + begin;
      const auto found = offered(line, begin);
      ASSERT_EQ(found.size(), 1U) << id << " after " << line;
      EXPECT_THAT(wordsOf(open + found[0] + open), ElementsAre(id)) << line;
    }
  }
  EXPECT_FALSE(std::filesystem::exists(directory_.file("trap")));
}

TEST_F(CompletionProgram, OmitsIdsThatWouldControlTheTerminalOrEndALine) {
  addNode("a\nfiles\nb");
  addNode("a\x1b[31m");
  addNode("a\tb");
  addNode("a\x7f");
  addNode("a\xe2\x80\xae");  // changes the writing direction
  addNode("a\xff");
  addNode("ab");
  EXPECT_THAT(offered("topoctl node delete a", "a"), ElementsAre("ab"));
}

TEST_F(CompletionProgram, OffersNoIdThatWouldBeAnOption) {
  addNode("--agent=evil");
  addNode("-x");
  EXPECT_THAT(offered("topoctl node delete ", ""), ElementsAre(""));
  EXPECT_THAT(offered("topoctl node delete -- -", "-"), ElementsAre("--agent=evil", "-x"));
}

TEST_F(CompletionProgram, ExecutesNothingOfTheTypedLine) {
  addNode("core");
  EXPECT_THAT(offered("topoctl node delete $(touch $TRAP) `touch $TRAP` ", ""), ElementsAre(""));
  EXPECT_THAT(offered("topoctl node delete \"$(touch $TRAP)", ""), ElementsAre(""));
  EXPECT_FALSE(std::filesystem::exists(directory_.file("trap")));
}

TEST_F(CompletionProgram, OffersNothingForAWordThatBashExpands) {
  addNode("core$(touch $TRAP)");
  EXPECT_THAT(offered("topoctl node delete \"core$", "core$"), ElementsAre(""));
  EXPECT_THAT(offered("topoctl node delete core$", "core$"), ElementsAre(""));
  EXPECT_THAT(offered("topoctl node delete \"core\\$", "core\\$"),
              ElementsAre("core\\$(touch \\$TRAP)"));
}

TEST_F(CompletionProgram, IsSilentWithoutAnAgent) {
  for (const std::string agent : {"corbaloc::127.0.0.1:1/X", "nonsense", "IOR:00"}) {
    const Ended ended =
        runProgram({"__complete", "bash", "topoctl node delete "}, {"TOPO_AGENT=" + agent});
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.out, "words\n");
  }
}

TEST_F(CompletionProgram, IsSilentForArgumentsOfNoScript) {
  for (const std::vector<std::string>& arguments : std::vector<std::vector<std::string>>{
           {"__complete"}, {"__complete", "bash"}, {"__complete", "fish", "x"}}) {
    const Ended ended = runProgram(arguments);
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.out + ended.err, "");
  }
  EXPECT_EQ(runProgram({"__complete", "bash", ""}).status, 0);
}

TEST_F(CompletionProgram, LeavesFilesToTheShell) {
  EXPECT_EQ(runProgram({"__complete", "bash", "topoctl import "}).out, "files\n");
}

TEST_F(CompletionProgram, GivesZshWholeWordsWithTheirHelp) {
  addNode("a b");
  EXPECT_EQ(
      runProgram({"__complete", "zsh", "node", "delete", "a"}, {"TOPO_AGENT=" + agentReference()})
          .out,
      "words\na b\ta b\n");
  EXPECT_THAT(runProgram({"__complete", "zsh", "capab"}).out,
              StartsWith("words\ncapabilities\tcapabilities  -- The operations"));
}

TEST_F(CompletionProgram, OffersIdsInZshAsTheyAre) {
  const std::string hostile = "a$(touch $TRAP) 'b\"";
  addNode(hostile);
  // Stubs of zsh's completion system: the offered words are the arguments after "--".
  const support::Ended ended =
      support::run("/usr/bin/env",
                   {"zsh", "-f", "-c",
                    "compdef() { }; compadd() { print -rl -- \"$@\" }; source \"$1\";"
                    "words=(\"$TOPOCTL\" node delete a); CURRENT=4; PREFIX=a; _topoctl",
                    "zsh", directory_.file("zsh.sh")},
                   {"TOPOCTL=" TOPOCTL_PROGRAM, "TOPO_AGENT=" + agentReference(),
                    "TRAP=" + directory_.file("trap")});
  EXPECT_EQ(ended.err, "");
  EXPECT_THAT(linesOf(ended.out), ElementsAre("-l", "-d", "shown", "--", hostile));
  EXPECT_FALSE(std::filesystem::exists(directory_.file("trap")));
}

TEST_F(CompletionProgram, PrintsScriptsThatTheShellsAccept) {
  const support::Ended bash = support::run("/bin/bash", {"-n", directory_.file("bash.sh")});
  EXPECT_EQ(bash.status, 0) << bash.err;
  const support::Ended zsh = support::run("/usr/bin/env", {"zsh", "-n", directory_.file("zsh.sh")});
  EXPECT_EQ(zsh.status, 0) << zsh.err;
}

}  // namespace
}  // namespace topoctl
