// Log lines about requests.

#include "agent/base/RequestLog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "agent/base/Log.h"
#include "tests/unit/agent/support/CapturedLog.h"

namespace {

using support::CapturedLog;
using testing::HasSubstr;

TEST(RequestLog, HasChangesAtLevelTwo) {
  {
    CapturedLog log(agent::kLogErrors);
    agent::logChange("10.0.0.1", "createNode", "\"a\"");
    EXPECT_EQ("", log.text());
  }
  CapturedLog log(agent::kLogEvents);
  agent::logChange("10.0.0.1", "createNode", "\"a\"");
  agent::logChange("", "reloadModule", "");
  EXPECT_THAT(log.text(), HasSubstr("10.0.0.1: createNode \"a\"\n"));
  EXPECT_THAT(log.text(), HasSubstr("this process: reloadModule\n"));
}

TEST(RequestLog, HasRefusalsAtLevelThree) {
  {
    CapturedLog log(agent::kLogEvents);
    agent::logRefusal("10.0.0.1", "createNode", "no node");
    EXPECT_EQ("", log.text());
  }
  CapturedLog log(agent::kLogTraces);
  agent::logRefusal("10.0.0.1", "createNode", "no node");
  EXPECT_THAT(log.text(), HasSubstr("10.0.0.1: createNode is refused: no node\n"));
}

TEST(RequestLog, EscapesControlCharacters) {
  CapturedLog log(agent::kLogTraces);
  agent::logRefusal("10.0.0.1", "createNode", "no node \"a\nb\"");
  EXPECT_THAT(log.text(), HasSubstr("no node \"a\\x0ab\"\n"));
}

}  // namespace
