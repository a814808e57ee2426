// The log as modules use it: levels, positions and formats.

#include "platform/agent/Logging.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <thread>

#include "agent/base/Log.h"

namespace {

using testing::HasSubstr;
using testing::MatchesRegex;

// The beginning of every line: date, time, priority and thread.
std::string head(const std::string& priority) {
  return "[0-9]{4}-[0-9]{2}-[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2}\\.[0-9]{6} " + priority +
         " \\[[0-9]+\\] ";
}

class ModuleLog : public testing::Test {
 protected:
  ModuleLog() {
    agent::setLogLevel(agent::kLogTraces);
    at("Here.cpp", 12);
  }
  ~ModuleLog() override {
    agent::setLogLevel(agent::kLogErrors);
    at("", 0);
  }

  static void at(const std::string& file, int line) {
    *NS_CORBA::GetTss() = NS_CORBA::LogPosition{file, "", line};
  }

  static std::string loggedBy(const std::function<void()>& call) {
    testing::internal::CaptureStderr();
    call();
    return testing::internal::GetCapturedStderr();
  }
};

class ModuleLogAtLevel : public ModuleLog, public testing::WithParamInterface<int> {
 protected:
  ModuleLogAtLevel() { agent::setLogLevel(GetParam()); }
};

TEST_P(ModuleLogAtLevel, WritesTextsUpToTheLevel) {
  for (int level = 1; level <= 3; ++level) {
    const std::string logged = loggedBy([&] { NS_CORBA::TaDebug(level, "a text"); });
    EXPECT_EQ(level > GetParam(), logged.empty()) << level;
  }
}

TEST_P(ModuleLogAtLevel, WritesFormattedTextsUpToTheLevel) {
  for (int level = 1; level <= 3; ++level) {
    const std::string logged = loggedBy([&] { NS_CORBA::TaDebugWithPara(level, "%s", "a text"); });
    EXPECT_EQ(level > GetParam(), logged.empty()) << level;
  }
}

INSTANTIATE_TEST_SUITE_P(EveryLevel, ModuleLogAtLevel, testing::Values(1, 2, 3));

TEST_F(ModuleLog, WritesALineWithTimePriorityThreadAndPosition) {
  EXPECT_THAT(loggedBy([] { NS_CORBA::TaDebug(1, "a text"); }),
              MatchesRegex(head("error") + "Here\\.cpp:12 a text\n"));
  EXPECT_THAT(loggedBy([] { NS_CORBA::TaDebug(2, "a text"); }),
              MatchesRegex(head("info") + "Here\\.cpp:12 a text\n"));
  EXPECT_THAT(loggedBy([] { NS_CORBA::TaDebug(3, "a text"); }),
              MatchesRegex(head("debug") + "Here\\.cpp:12 a text\n"));
}

TEST_F(ModuleLog, KeepsThePositionWhenTheAgentLogs) {
  loggedBy([] { agent::log(agent::kLogEvents, "a text"); });
  EXPECT_EQ("Here.cpp", NS_CORBA::GetTss()->file);
  EXPECT_EQ(12, NS_CORBA::GetTss()->line);
}

TEST_F(ModuleLog, FormatsArguments) {
  EXPECT_THAT(loggedBy([] { NS_CORBA::TaDebugWithPara(1, "%s=%d (0x%08x) %%", "n", -5, 0xBAU); }),
              MatchesRegex(head("error") + "Here\\.cpp:12 n=-5 \\(0x000000ba\\) %\n"));
}

TEST_F(ModuleLog, FormatsLongArgumentsCompletely) {
  const std::string text(2000, 'x');
  EXPECT_THAT(loggedBy([&] { NS_CORBA::TaDebugWithPara(1, "<%s>", text.c_str()); }),
              HasSubstr("Here.cpp:12 <" + text + ">\n"));
}

TEST_F(ModuleLog, DoesNotFormatAPlainText) {
  EXPECT_THAT(loggedBy([] { NS_CORBA::TaDebug(1, "100%s %n %d"); }),
              HasSubstr("Here.cpp:12 100%s %n %d\n"));
  EXPECT_THAT(loggedBy([] { NS_CORBA::TaDebugWithPara(1, "%s", "100%s %n %d"); }),
              HasSubstr("Here.cpp:12 100%s %n %d\n"));
}

TEST_F(ModuleLog, WritesOneLineForAnyText) {
  EXPECT_THAT(loggedBy([] { NS_CORBA::TaDebug(1, "a\r\ntext\n{} %v\n"); }),
              HasSubstr("Here.cpp:12 a\\x0d\\x0atext\\x0a{} %v\\x0a\n"));
}

TEST_F(ModuleLog, EscapesControlCharacters) {
  EXPECT_THAT(loggedBy([] { NS_CORBA::TaDebug(1, "\x1b[2J\u009b1m\x7f\u2028\u202e\xff\\x1b"); }),
              HasSubstr("Here.cpp:12 \\x1b[2J\\xc2\\x9b1m\\x7f\\xe2\\x80\\xa8\\xe2\\x80\\xae\\xff"
                        "\\\\x1b\n"));
  EXPECT_THAT(loggedBy([] { NS_CORBA::TaDebugWithPara(1, "<%s>", "\x1b[2J"); }),
              HasSubstr("Here.cpp:12 <\\x1b[2J>\n"));
}

TEST_F(ModuleLog, CutsLongTexts) {
  const std::string longest(3000, 'x');
  EXPECT_THAT(loggedBy([&] { NS_CORBA::TaDebug(1, longest.c_str()); }),
              HasSubstr("Here.cpp:12 " + longest + "\n"));
  EXPECT_THAT(loggedBy([&] { NS_CORBA::TaDebug(1, (longest + "y").c_str()); }),
              HasSubstr("Here.cpp:12 " + longest + "...\n"));
}

TEST_F(ModuleLog, ReportsThePositionAtTheTimeOfTheCall) {
  at("There.cpp", 77);
  EXPECT_THAT(loggedBy([] { NS_CORBA::TaDebug(1, "a text"); }), HasSubstr(" There.cpp:77 a text"));
  NS_CORBA::GetTss()->line = 78;
  EXPECT_THAT(loggedBy([] { NS_CORBA::TaDebug(1, "a text"); }), HasSubstr(" There.cpp:78 a text"));
}

TEST_F(ModuleLog, HasOnePositionPerThread) {
  NS_CORBA::LogPosition* const mine = NS_CORBA::GetTss();
  EXPECT_EQ(mine, NS_CORBA::GetTss());
  std::string logged;
  std::thread([&] {
    NS_CORBA::LogPosition* const other = NS_CORBA::GetTss();
    EXPECT_NE(mine, other);
    EXPECT_EQ("", other->file);
    EXPECT_EQ("", other->function);
    EXPECT_EQ(0, other->line);
    at("Other.cpp", 5);
    logged = loggedBy([] { NS_CORBA::TaDebug(1, "a text"); });
  }).join();
  EXPECT_THAT(logged, HasSubstr(" Other.cpp:5 a text"));
  EXPECT_THAT(loggedBy([] { NS_CORBA::TaDebug(1, "a text"); }), HasSubstr(" Here.cpp:12 a text"));
}

TEST_F(ModuleLog, ReportsAPlatformFailureAsAnError) {
  agent::setLogLevel(agent::kLogErrors);
  ProcessException failure;
  failure.errorCode = 1234;
  failure.detail << "no "
                 << "table";
  EXPECT_THAT(loggedBy([&] { NS_CORBA::NbiException(failure); }),
              MatchesRegex(head("error") + "Here\\.cpp:12 platform failure 1234: no table\n"));
}

TEST_F(ModuleLog, ReportsAPlatformFailureWithoutDetail) {
  InterfaceNotExistException failure;
  EXPECT_THAT(loggedBy([&] { NS_CORBA::NbiException(failure); }),
              HasSubstr("Here.cpp:12 platform failure 1092091908: \n"));
}

}  // namespace
