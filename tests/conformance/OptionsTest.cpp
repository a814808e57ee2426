#include "conformance/Options.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace {

using conformance::Options;
using conformance::UsageError;
using testing::ElementsAre;
using testing::HasSubstr;

Options parse(std::vector<const char*> arguments) {
  arguments.insert(arguments.begin(), "topo-conformance");
  return conformance::parseOptions(static_cast<int>(arguments.size()), arguments.data(),
                                   {"module.so", "probe.so"});
}

TEST(ConformanceOptions, TakeTheCommandOfTheHost) {
  const Options options = parse({"--timeout", "3", "--", "host", "--console", "{module}"});
  EXPECT_THAT(options.command, ElementsAre("host", "--console", "{module}"));
  EXPECT_EQ(options.timeout.count(), 3);
  EXPECT_FALSE(options.usesConsole);
  EXPECT_EQ(options.module, "module.so");
  EXPECT_EQ(options.probe, "probe.so");
}

TEST(ConformanceOptions, TakeTheReferenceOfARunningHost) {
  const Options options = parse({"--agent", "corbaloc::h:1/K", "--module", "m"});
  EXPECT_EQ(options.agent, "corbaloc::h:1/K");
  EXPECT_EQ(options.module, "m");
}

TEST(ConformanceOptions, TakeTheNamesOfRules) {
  const Options options = parse({"--rule", "views.unique,host.end", "--rule", "host.log", "--",
                                 "host", "--option", "{module}"});
  EXPECT_THAT(options.rules, ElementsAre("views.unique", "host.end", "host.log"));
  EXPECT_THAT(options.command, ElementsAre("host", "--option", "{module}"));
  EXPECT_THROW(parse({"--rule"}), UsageError);
}

TEST(ConformanceOptions, NeedExactlyOneHost) {
  EXPECT_THROW(parse({}), UsageError);
  EXPECT_THROW(parse({"--console"}), UsageError);
  EXPECT_THROW(parse({"--agent", "x", "--", "host", "{module}"}), UsageError);
}

TEST(ConformanceOptions, RejectUnknownOptionsAndTimeouts) {
  EXPECT_THROW(parse({"--no-such-option", "--", "host", "{module}"}), UsageError);
  EXPECT_THROW(parse({"--timeout", "0", "--", "host", "{module}"}), UsageError);
  EXPECT_THROW(parse({"--timeout", "x", "--", "host", "{module}"}), UsageError);
}

std::string refusalOf(const std::vector<const char*>& arguments) {
  try {
    parse(arguments);
  } catch (const UsageError& failure) {
    return failure.what();
  }
  return "";
}

TEST(ConformanceOptions, RejectUnknownPlaceholders) {
  EXPECT_EQ(refusalOf({"--", "host", "{modul}"}),
            "unknown placeholder {modul} in the argument \"{modul}\": {module} and {consumer} are "
            "known");
  EXPECT_THAT(refusalOf({"--", "host", "{module}{Consumer}"}), HasSubstr("{Consumer}"));
  EXPECT_EQ(refusalOf({"--", "host", "--module={module},{consumer}", "${HOME}", "{\"a\": 1}"}), "");
}

TEST(ConformanceOptions, RejectTheBeginOfTheCommandAsAValue) {
  for (const char* option : {"--rule", "--module", "--probe", "--agent"}) {
    EXPECT_EQ(refusalOf({option, "--", "host", "{module}"}),
              std::string(option) + ": a value is missing before --");
  }
}

TEST(ConformanceOptions, RejectTheConsoleOfARunningHost) {
  EXPECT_THAT(refusalOf({"--console", "--agent", "x"}), HasSubstr("--console"));
}

TEST(ConformanceOptions, RejectACommandThatDoesNotPassTheModule) {
  EXPECT_EQ(refusalOf({"--", "host", "{consumer}"}),
            "the command of the host has no {module}, so the host cannot load the module and the "
            "probe");
}

TEST(ConformanceOptions, HelpNamesThePlaceholder) {
  EXPECT_THAT(parse({"--help"}).notice, HasSubstr("{module}"));
}

}  // namespace
