#include "conformance/HostProtocol.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using conformance::countMappedFiles;
using conformance::expand;
using conformance::Outcome;
using conformance::parseAnswer;
using conformance::parseProbeReport;
using conformance::referenceInReadyLine;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(HostProtocol, ReadsTheReferenceOfAReadyLine) {
  EXPECT_EQ(referenceInReadyLine("ready IOR:01"), "IOR:01");
  EXPECT_EQ(
      referenceInReadyLine("topo-agentd ready: endpoint h:1, reference corbaloc::h:1/K, 2 nodes"),
      "corbaloc::h:1/K");
}

TEST(HostProtocol, FindsNoReferenceInOtherLines) {
  EXPECT_EQ(referenceInReadyLine(""), std::nullopt);
  EXPECT_EQ(referenceInReadyLine("ready"), std::nullopt);
  EXPECT_EQ(referenceInReadyLine("ready "), std::nullopt);
  EXPECT_EQ(referenceInReadyLine("already IOR:01"), std::nullopt);
}

TEST(HostProtocol, ReadsAnswers) {
  EXPECT_TRUE(parseAnswer("ok")->isOk);
  EXPECT_EQ(parseAnswer("ok IOR:01")->text, "IOR:01");
  EXPECT_FALSE(parseAnswer("failed no such node")->isOk);
  EXPECT_EQ(parseAnswer("failed no such node")->text, "no such node");
}

TEST(HostProtocol, IgnoresLinesThatAreNoAnswers) {
  EXPECT_FALSE(parseAnswer("").has_value());
  EXPECT_FALSE(parseAnswer("okay").has_value());
  EXPECT_FALSE(parseAnswer("a log line").has_value());
}

TEST(HostProtocol, ReplacesEveryPlaceholder) {
  EXPECT_THAT(expand({"{m}", "--module={m},{m}", "x"}, "{m}", "/a{m}"),
              ElementsAre("/a{m}", "--module=/a{m},/a{m}", "x"));
}

TEST(ProbeReport, HasTheOutcomeOfEachRule) {
  const auto results = parseProbeReport(
      "begin\ta\tRule a\npass\ta\nbegin\tb\tRule b\nFAIL\tb\twhy\nbegin\tc\tRule c\nskip\tc\tno\n",
      "died");
  ASSERT_EQ(results.size(), 3U);
  EXPECT_EQ(results[0].outcome, Outcome::kPass);
  EXPECT_EQ(results[0].text, "Rule a");
  EXPECT_EQ(results[1].outcome, Outcome::kFail);
  EXPECT_EQ(results[1].reason, "why");
  EXPECT_EQ(results[2].outcome, Outcome::kSkip);
}

TEST(ProbeReport, NamesTheRuleDuringWhichTheProcessEnded) {
  const auto results = parseProbeReport("begin\ta\tRule a\npass\ta\nbegin\tb\tRule b\n", "died");
  ASSERT_EQ(results.size(), 2U);
  EXPECT_EQ(results[1].rule, "b");
  EXPECT_EQ(results[1].outcome, Outcome::kFail);
  EXPECT_EQ(results[1].reason, "died");
}

TEST(ProbeReport, IgnoresMalformedLines) {
  EXPECT_THAT(parseProbeReport("\nx\npass\ta\nbegin\nbegin\ta\n", "died"), IsEmpty());
}

TEST(MappedFiles, AreCountedOncePerFile) {
  const std::string maps =
      "7f00-7f01 r--p 00000000 08:01 11 /x/libm.so\n"
      "7f01-7f02 r-xp 00001000 08:01 11 /x/libm.so\n"
      "7f03-7f04 r--p 00000000 08:01 12 /tmp/a/libm.so (deleted)\n"
      "7f05-7f06 r--p 00000000 08:01 13 /x/other-libm.so\n"
      "7f07-7f08 rw-p 00000000 00:00 0 \n";
  EXPECT_EQ(countMappedFiles(maps, "libm.so"), 2U);
  EXPECT_EQ(countMappedFiles(maps, "none.so"), 0U);
  EXPECT_EQ(countMappedFiles("", "libm.so"), 0U);
}

}  // namespace
