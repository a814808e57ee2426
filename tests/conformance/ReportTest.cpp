#include "conformance/Report.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

namespace {

using conformance::format;
using conformance::Outcome;
using conformance::Report;
using testing::EndsWith;
using testing::StartsWith;

TEST(ConformanceReport, HasOneLineForEachCheckAndTheCounts) {
  std::ostringstream out;
  Report report(out);
  report.add({Outcome::kPass, "a.b", "Rule one", ""});
  report.add({Outcome::kFail, "a.c", "Rule two", "it is broken"});
  report.add({Outcome::kSkip, "a.d", "Rule three", "no console"});
  report.finish();
  EXPECT_EQ(out.str(),
            "pass  a.b  Rule one\n"
            "FAIL  a.c  Rule two (it is broken)\n"
            "skip  a.d  Rule three (no console)\n"
            "1 passed, 1 failed, 1 skipped\n");
}

TEST(ConformanceReport, EscapesControlCharactersOfTheHost) {
  EXPECT_EQ(format({Outcome::kFail, "a", "b", "x\ny\x1b"}), "FAIL  a  b (x\\ny\\x1b)");
}

TEST(ConformanceReport, CutsTheMiddleOfALongText) {
  const std::string text = "begin" + std::string(5000, 'x') + "end";
  const std::string line = format({Outcome::kFail, "a", "b", text});
  EXPECT_LE(line.size(), 2003U);
  EXPECT_THAT(line, StartsWith("FAIL  a  b (begin"));
  EXPECT_THAT(line, EndsWith("end)"));
}

TEST(ConformanceReport, HasStatus1AfterAFailureOnly) {
  std::ostringstream out;
  Report report(out);
  report.add({Outcome::kPass, "a", "b", ""});
  report.add({Outcome::kSkip, "a", "b", ""});
  EXPECT_EQ(report.exitStatus(), 0);
  report.add({Outcome::kFail, "a", "b", ""});
  EXPECT_EQ(report.exitStatus(), 1);
}

TEST(ConformanceReport, ThrowsWhenTheStreamTakesNoMore) {
  std::ostringstream out;
  Report report(out);
  out.setstate(std::ios::badbit);
  EXPECT_THROW(report.add({Outcome::kPass, "a", "b", ""}), std::runtime_error);
  EXPECT_THROW(report.finish(), std::runtime_error);
}

}  // namespace
