// Results of operations, and the line that an internal error leaves in the log.

#include "agent/base/OperationResult.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace {

using agent::Outcome;
using testing::EndsWith;

agent::Result<std::unique_ptr<int>> positive(int number) {
  if (number <= 0) {
    return Outcome{agent::kInvalidInput, "not positive"};
  }
  return std::make_unique<int>(number);
}

TEST(OperationResult, CarriesTheValueOfASuccess) {
  const auto result = positive(3);
  ASSERT_TRUE(result.ok());
  EXPECT_EQ(3, *result.value());
  EXPECT_TRUE(result.outcome().ok());
  EXPECT_EQ("", result.outcome().reason);
}

TEST(OperationResult, CarriesTheOutcomeOfAFailure) {
  const auto result = positive(0);
  EXPECT_FALSE(result.ok());
  EXPECT_EQ(agent::kInvalidInput, result.outcome().code);
  EXPECT_EQ("not positive", result.outcome().reason);
}

TEST(InternalError, IsLoggedAndLosesItsReason) {
  testing::internal::CaptureStderr();
  const Outcome answer =
      agent::logInternalError("setOwner", {agent::kInternalError, "the disk is full"});
  EXPECT_THAT(testing::internal::GetCapturedStderr(), EndsWith(" setOwner: the disk is full\n"));
  EXPECT_EQ(agent::kInternalError, answer.code);
  EXPECT_EQ("", answer.reason);
}

TEST(InternalError, IsTheOnlyFailureThatIsLogged) {
  testing::internal::CaptureStderr();
  const Outcome answer =
      agent::logInternalError("setOwner", {agent::kInvalidName, "malformed name"});
  EXPECT_TRUE(agent::logInternalError("setOwner", {}).ok());
  EXPECT_EQ("", testing::internal::GetCapturedStderr());
  EXPECT_EQ(agent::kInvalidName, answer.code);
  EXPECT_EQ("malformed name", answer.reason);
}

}  // namespace
