// Levels of the log, and the format of its lines.

#include "agent/base/Log.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>

namespace {

using testing::HasSubstr;
using testing::MatchesRegex;

// The beginning of every line: date, time, priority and thread.
std::string head(const std::string& priority) {
  return "[0-9]{4}-[0-9]{2}-[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2}\\.[0-9]{6} " + priority +
         " \\[[0-9]+\\] ";
}

std::string loggedBy(const std::function<void()>& call) {
  testing::internal::CaptureStderr();
  call();
  return testing::internal::GetCapturedStderr();
}

class Log : public testing::Test {
 protected:
  Log() { agent::setLogLevel(agent::kLogTraces); }
  ~Log() override { agent::setLogLevel(agent::kLogErrors); }
};

class LogAtLevel : public Log, public testing::WithParamInterface<int> {
 protected:
  LogAtLevel() { agent::setLogLevel(GetParam()); }
};

TEST_P(LogAtLevel, WritesMessagesUpToTheLevel) {
  for (int level = 1; level <= 3; ++level) {
    EXPECT_EQ(level <= GetParam(), agent::isLogged(level)) << level;
    EXPECT_EQ(level > GetParam(), loggedBy([&] { agent::log(level, "a text"); }).empty()) << level;
    EXPECT_EQ(level > GetParam(),
              loggedBy([&] { agent::logAt(level, "Here.cpp", 12, "a text"); }).empty())
        << level;
  }
}

INSTANTIATE_TEST_SUITE_P(EveryLevel, LogAtLevel, testing::Values(1, 2, 3));

TEST_F(Log, WritesALineWithTimePriorityThreadAndPosition) {
  EXPECT_THAT(loggedBy([] { agent::logAt(1, "Here.cpp", 12, "a text"); }),
              MatchesRegex(head("error") + "Here\\.cpp:12 a text\n"));
  EXPECT_THAT(loggedBy([] { agent::logAt(2, "Here.cpp", 12, "a text"); }),
              MatchesRegex(head("info") + "Here\\.cpp:12 a text\n"));
  EXPECT_THAT(loggedBy([] { agent::logAt(3, "Here.cpp", 12, "a text"); }),
              MatchesRegex(head("debug") + "Here\\.cpp:12 a text\n"));
}

TEST_F(Log, WritesMessagesOfTheAgentAtAFixedPosition) {
  EXPECT_THAT(loggedBy([] { agent::log(agent::kLogEvents, "a text"); }),
              MatchesRegex(head("info") + "topo-agentd:0 a text\n"));
}

TEST_F(Log, EscapesHarmfulCharacters) {
  EXPECT_THAT(loggedBy([] { agent::log(1, std::string("a\0b\x1b", 4)); }),
              HasSubstr("topo-agentd:0 a\\x00b\\x1b\n"));
  EXPECT_THAT(loggedBy([] { agent::log(1, "Köln 😀"); }), HasSubstr("topo-agentd:0 Köln 😀\n"));
}

TEST_F(Log, CutsALongText) {
  const std::string longest(3000, 'x');
  EXPECT_THAT(loggedBy([&] { agent::log(1, longest); }),
              HasSubstr("topo-agentd:0 " + longest + "\n"));
  EXPECT_THAT(loggedBy([&] { agent::log(1, longest + "y"); }),
              HasSubstr("topo-agentd:0 " + longest + "...\n"));
}

}  // namespace
