#include "client/commandline/Completion.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "client/commandline/Options.h"

namespace topoctl {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

std::vector<std::string> textsOf(const Words& words) {
  std::vector<std::string> texts;
  for (const Candidate& candidate : completionOf(words, "").candidates) {
    texts.push_back(candidate.text);
  }
  return texts;
}

Values valuesOf(const Words& words) {
  return completionOf(words, "").values;
}

TEST(Completion, OffersTheCommands) {
  EXPECT_THAT(textsOf({""}), Contains("topo"));
  EXPECT_THAT(textsOf({"clock-"}), ElementsAre("clock-position", "clock-link", "clock-links"));
  EXPECT_THAT(textsOf({"node", ""}),
              testing::UnorderedElementsAre("create", "delete", "rename", "move", "change"));
  EXPECT_THAT(textsOf({"--format", "json", "to"}), ElementsAre("topo"));
  EXPECT_THAT(textsOf({"topo", ""}), IsEmpty());
}

TEST(Completion, KeepsTheHiddenCommandHidden) {
  EXPECT_THAT(textsOf({"_"}), IsEmpty());
}

TEST(Completion, GivesTheHelpOfTheTables) {
  const auto candidates = completionOf({"capab"}, "").candidates;
  ASSERT_EQ(candidates.size(), 1U);
  EXPECT_EQ(candidates[0].help, findSyntax("capabilities")->help);
}

TEST(Completion, OffersTheOptionsOfTheCommandAndOfTheProgram) {
  EXPECT_THAT(textsOf({"watch", "--"}), Contains("--listen"));
  EXPECT_THAT(textsOf({"watch", "--"}), Contains("--agent"));
  EXPECT_THAT(textsOf({"topo", "--"}), Not(Contains("--listen")));
  EXPECT_THAT(textsOf({"watch", "--form"}), ElementsAre("--format"));
  EXPECT_THAT(textsOf({"watch", "--help"}), ElementsAre("--help"));
}

TEST(Completion, OffersTheChoicesOfAnOption) {
  EXPECT_THAT(textsOf({"--format", ""}), ElementsAre("table", "json", "csv"));
  EXPECT_THAT(textsOf({"topo", "--format=j"}), ElementsAre("--format=json"));
  EXPECT_THAT(textsOf({"node", "create", "x", "--kind", "e"}), ElementsAre("element"));
  EXPECT_THAT(textsOf({"--timeout", ""}), IsEmpty());
}

TEST(Completion, OffersTheChoicesOfAPlace) {
  EXPECT_THAT(textsOf({"test-switch", ""}), ElementsAre("on", "off"));
  EXPECT_THAT(textsOf({"set", "n"}), ElementsAre("native-name"));
  EXPECT_THAT(textsOf({"completion", ""}), ElementsAre("bash", "zsh"));
}

TEST(Completion, OffersOnlyChoicesThatTheParserAccepts) {
  for (const std::string& format : choicesOf(Values::kFormat)) {
    EXPECT_NO_THROW(parseOptions({"--format", format, "topo"}, ""));
  }
  for (const std::string& kind : choicesOf(Values::kKind)) {
    EXPECT_NO_THROW(parseOptions({"node", "create", "x", "--name", "x", "--kind", kind}, ""));
  }
  for (const std::string& state : choicesOf(Values::kSwitch)) {
    EXPECT_NO_THROW(parseOptions({"test-switch", state}, ""));
  }
  for (const std::string& attribute : choicesOf(Values::kAttribute)) {
    EXPECT_NO_THROW(parseOptions({"set", attribute, "NE=1", "a=b"}, ""));
  }
  for (const std::string& shell : choicesOf(Values::kShell)) {
    EXPECT_NO_THROW(parseOptions({"completion", shell}, ""));
  }
}

TEST(Completion, KnowsWherePlacesAndOptionsTakeObjects) {
  EXPECT_EQ(valuesOf({"node", "delete", ""}), Values::kNode);
  EXPECT_EQ(valuesOf({"node", "rename", "a", ""}), Values::kAny);
  EXPECT_EQ(valuesOf({"node", "create", ""}), Values::kAny);
  EXPECT_EQ(valuesOf({"node", "create", "a", "--parent", ""}), Values::kNode);
  EXPECT_EQ(valuesOf({"node", "move", "a", ""}), Values::kNode);
  EXPECT_EQ(valuesOf({"below", ""}), Values::kSubnetwork);
  EXPECT_EQ(valuesOf({"element", "hide", ""}), Values::kElement);
  EXPECT_EQ(valuesOf({"clock-link", "change", ""}), Values::kClockLink);
  EXPECT_EQ(valuesOf({"clock-link", "change", "x", "--a-end", ""}), Values::kClockPosition);
  EXPECT_EQ(valuesOf({"set", "owner", ""}), Values::kObject);
  EXPECT_EQ(valuesOf({"import", ""}), Values::kFile);
  EXPECT_EQ(valuesOf({"--ior-file", ""}), Values::kFile);
}

TEST(Completion, KeepsTheNameOfAnOptionBeforeItsValue) {
  EXPECT_EQ(completionOf({"node", "create", "a", "--parent=co"}, "").prefix, "--parent=");
}

TEST(Completion, TakesWordsAfterTwoDashesAsPlaces) {
  EXPECT_EQ(valuesOf({"node", "delete", "--", ""}), Values::kNode);
  EXPECT_TRUE(completionOf({"node", "delete", "--", "-"}, "").dashIsAllowed);
  EXPECT_THAT(textsOf({"node", "delete", "--", "--"}), IsEmpty());
}

TEST(Completion, CallsTheAgentOfTheOptions) {
  EXPECT_EQ(
      completionOf({"--agent", "corbaloc::h:1/X", "node", "delete", ""}, "").access->reference,
      "corbaloc::h:1/X");
  EXPECT_EQ(completionOf({"node", "delete", "--ior-file=x", ""}, "").access->iorFile, "x");
  EXPECT_EQ(completionOf({"node", "delete", ""}, "corbaloc::e:1/X").access->reference,
            "corbaloc::e:1/X");
  EXPECT_FALSE(completionOf({"--timeout", "x", "node", "delete", ""}, "").access.has_value());
}

TEST(Completion, SurvivesWordsThatNoCommandHas) {
  EXPECT_THAT(textsOf({"no-such", "--no-such", "--no-such=1", "a", ""}), IsEmpty());
  EXPECT_THAT(completionOf({}, "").candidates, IsEmpty());
  EXPECT_THAT(textsOf({"--no-such=x"}), IsEmpty());
}

}  // namespace
}  // namespace topoctl
