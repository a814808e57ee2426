// Log lines about requests.

#include "agent/base/RequestLog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <new>
#include <vector>

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

TEST(RequestLog, LosesTheLineOfAChangeWithoutMemory) {
  EXPECT_NO_THROW(agent::afterChange([] { throw std::bad_alloc(); }));
}

TEST(RequestRecords, HaveTheOutcomeOfAChangeWithoutMemory) {
  std::vector<agent::RequestRecord> records;
  agent::setRequestRecorder([&](const agent::RequestRecord& record) { records.push_back(record); });
  agent::recordWith(agent::RequestRecord::Outcome::kFailed,
                    []() -> agent::RequestRecord { throw std::bad_alloc(); });
  agent::setRequestRecorder(nullptr);
  ASSERT_EQ(1U, records.size());
  EXPECT_EQ(agent::RequestRecord::Outcome::kFailed, records[0].outcome);
  EXPECT_EQ("out of memory", records[0].reason);
}

TEST(RequestLog, EscapesControlCharacters) {
  CapturedLog log(agent::kLogTraces);
  agent::logRefusal("10.0.0.1", "createNode", "no node \"a\nb\"");
  EXPECT_THAT(log.text(), HasSubstr("no node \"a\\x0ab\"\n"));
}

}  // namespace
