#include "conformance/HostProcess.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "tests/support/TemporaryDirectory.h"

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

TEST(HostProcess, StoresTheStandardErrorInNoFile) {
  HostProcess host({"/bin/sh", "-c",
                    "ulimit -f 1; (yes | tr -d '\\n' | head -c 3000000; echo; echo the end) >&2; "
                    "exit 3"},
                   {});
  ASSERT_TRUE(host.endsWithin(kLong));
  EXPECT_EQ(host.describeEnd(), "it ended with status 3, from its standard error: the end");
}

TEST(HostProcess, PrefersTheLineWithAnUndefinedSymbolInTheDescriptionOfTheEnd) {
  HostProcess host(
      {"/bin/sh", "-c", "(echo a; echo 'x.so: undefined symbol: f'; echo b) >&2; exit 1"}, {});
  ASSERT_TRUE(host.endsWithin(kLong));
  EXPECT_THAT(host.describeEnd(), EndsWith("standard error: x.so: undefined symbol: f"));
}

TEST(HostProcess, EndsWhileAnotherProcessHasItsStandardError) {
  HostProcess host({"/bin/sh", "-c", "(exec sleep 600) & echo last >&2; exit 3"}, {});
  ASSERT_TRUE(host.endsWithin(kLong));
  EXPECT_THAT(host.describeEnd(), EndsWith("last"));
}

std::string reasonOfNoStart(const std::string& program) {
  try {
    HostProcess({program}, {});
  } catch (const conformance::NotExecuted& failure) {
    return failure.what();
  }
  return "";
}

TEST(HostProcess, SaysWhyAProgramIsNotExecuted) {
  const support::TemporaryDirectory directory;
  std::ofstream(directory.file("script")) << "#!/no/such/interpreter\n";
  std::filesystem::permissions(directory.file("script"), std::filesystem::perms::owner_all);
  EXPECT_EQ(reasonOfNoStart("./nohost"), "the program ./nohost does not exist");
  EXPECT_EQ(reasonOfNoStart("no-such-host"), "the program no-such-host does not exist");
  EXPECT_EQ(reasonOfNoStart("/etc/passwd"),
            "the program /etc/passwd cannot be executed: Permission denied");
  EXPECT_EQ(reasonOfNoStart(directory.file("script")),
            "the program " + directory.file("script") +
                " cannot be executed: its interpreter does not exist");
}

}  // namespace
