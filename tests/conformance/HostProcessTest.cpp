#include "conformance/HostProcess.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace {

using conformance::HostProcess;
using std::chrono::milliseconds;
using testing::EndsWith;
using testing::HasSubstr;

constexpr milliseconds kLong{20000};

class Script : public HostProcess {
 public:
  explicit Script(const std::string& script)
      : HostProcess({"/bin/sh", "-c", "exec 2>&1; " + script}, {}) {}
};

TEST(HostProcess, ReadsTheLinesOfTheOutput) {
  Script host("printf 'a\\n\\nb\\nrest'");
  EXPECT_EQ(host.readLine(kLong), "a");
  EXPECT_EQ(host.readLine(kLong), "");
  EXPECT_EQ(host.readLine(kLong), "b");
  EXPECT_EQ(host.readLine(kLong), std::nullopt);
}

TEST(HostProcess, StopsReadingALineThatNeverEndsAfterTheTimeout) {
  Script host("yes | tr -d '\\n' | head -c 900000; exec sleep 600");
  EXPECT_EQ(host.readLine(milliseconds(100)), std::nullopt);
}

TEST(HostProcess, SplitsALineOfMoreThan1MiB) {
  Script host("yes | tr -d '\\n' | head -c 2000000");
  const auto line = host.readLine(kLong);
  ASSERT_TRUE(line.has_value());
  EXPECT_GE(line->size(), 1048576U);
  EXPECT_LT(line->size(), 1200000U);
}

TEST(HostProcess, ReturnsNoLineWithoutTimeLeft) {
  Script host("echo a; echo b");
  EXPECT_EQ(host.readLine(kLong), "a");
  EXPECT_EQ(host.readLine(milliseconds(0)), std::nullopt);
  EXPECT_EQ(host.readLine(kLong), "b");
}

TEST(HostProcess, DescribesTheEndWithABoundedLastLineOfTheStandardError) {
  HostProcess host(
      {"/bin/sh", "-c", "(yes | tr -d '\\n' | head -c 300000; echo the end) >&2; exit 3"}, {});
  ASSERT_TRUE(host.endsWithin(kLong));
  const std::string text = host.describeEnd();
  EXPECT_THAT(text, HasSubstr("it ended with status 3"));
  EXPECT_THAT(text, EndsWith("the end"));
  EXPECT_LT(text.size(), 70000U);
}

}  // namespace
