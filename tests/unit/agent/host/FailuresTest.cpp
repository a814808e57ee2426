// The exception and the reason of each failure code.

#include "platform/agent/Failures.h"

#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <ostream>
#include <string>
#include <thread>

#include "agent/base/FailureCodes.h"
#include "agent/host/FailureReason.h"

namespace {

struct Failure {
  globaldefs::ExceptionType_T type;
  std::string reason;
};

Failure failureOf(const globaldefs::ProcessingFailureException& exception) {
  return {exception.exceptionType, exception.errorReason.in()};
}

Failure constructed(CORBA::ULong code) {
  globaldefs::ProcessingFailureException exception;
  NS_CORBA::ConstructException(code, exception);
  return failureOf(exception);
}

std::optional<Failure> raisedBy(const std::function<void()>& call) {
  try {
    call();
    return std::nullopt;
  } catch (const globaldefs::ProcessingFailureException& exception) {
    return failureOf(exception);
  }
}

struct Case {
  const char* name;
  CORBA::ULong code;
  globaldefs::ExceptionType_T type;
  const char* reason;
};

std::ostream& operator<<(std::ostream& out, const Case& failure) {
  return out << failure.name;
}

class FailureOfACode : public testing::TestWithParam<Case> {
 protected:
  FailureOfACode() { agent::explainFailure(0, ""); }
};

TEST_P(FailureOfACode, HasATypeAndAReason) {
  const Failure failure = constructed(GetParam().code);
  EXPECT_EQ(GetParam().type, failure.type);
  EXPECT_EQ(GetParam().reason, failure.reason);
}

TEST_P(FailureOfACode, IsRaised) {
  const auto failure = raisedBy([] { NS_CORBA::ThrowException(GetParam().code); });
  ASSERT_TRUE(failure);
  EXPECT_EQ(GetParam().type, failure->type);
  EXPECT_EQ(GetParam().reason, failure->reason);
}

TEST_P(FailureOfACode, IsRaisedWithTheTextOfTheCaller) {
  const auto failure = raisedBy([] { NS_CORBA::ThrowException(GetParam().code, "no room"); });
  ASSERT_TRUE(failure);
  EXPECT_EQ(GetParam().type, failure->type);
  EXPECT_EQ("no room", failure->reason);
}

TEST_P(FailureOfACode, IsRaisedWithItsOwnReasonWhenTheCallerHasNone) {
  const auto failure = raisedBy([] { NS_CORBA::ThrowException(GetParam().code, ""); });
  ASSERT_TRUE(failure);
  EXPECT_EQ(GetParam().type, failure->type);
  EXPECT_EQ(GetParam().reason, failure->reason);
}

INSTANTIATE_TEST_SUITE_P(
    EveryCode, FailureOfACode,
    testing::Values(Case{"NotImplemented", agent::kNotImplemented,
                         globaldefs::EXCPT_NOT_IMPLEMENTED, "not implemented (code 1112801281)"},
                    Case{"InternalError", agent::kInternalError, globaldefs::EXCPT_INTERNAL_ERROR,
                         "internal error (code 1112801282)"},
                    Case{"InvalidName", agent::kInvalidName, globaldefs::EXCPT_INVALID_INPUT,
                         "malformed object name (code 1112801283)"},
                    Case{"EntityNotFound", agent::kEntityNotFound,
                         globaldefs::EXCPT_ENTITY_NOT_FOUND, "no such object (code 1112801284)"},
                    Case{"UserLabelInUse", agent::kUserLabelInUse,
                         globaldefs::EXCPT_USERLABEL_IN_USE, "user label in use (code 1112801285)"},
                    Case{"TooManyIterators", agent::kTooManyIterators,
                         globaldefs::EXCPT_TOO_MANY_OPEN_ITERATORS,
                         "too many open iterators (code 1112801286)"},
                    Case{"AlreadyExists", agent::kAlreadyExists, globaldefs::EXCPT_OBJECT_IN_USE,
                         "the object exists already (code 1112801287)"},
                    Case{"TooMuch", agent::kTooMuch, globaldefs::EXCPT_CAPACITY_EXCEEDED,
                         "a limit of number or size is reached (code 1112801288)"},
                    Case{"InvalidInput", agent::kInvalidInput, globaldefs::EXCPT_INVALID_INPUT,
                         "invalid input (code 1112801289)"},
                    Case{"ConversionFailed", 0x411800BA, globaldefs::EXCPT_INTERNAL_ERROR,
                         "the result could not be converted or iterated (code 1092092090)"},
                    Case{"InterfaceNotExist", 0x41180004, globaldefs::EXCPT_INTERNAL_ERROR,
                         "a platform service is missing (code 1092091908)"},
                    Case{"Unknown", 0xFFFFFFFF, globaldefs::EXCPT_INTERNAL_ERROR,
                         "platform failure (code 4294967295)"}),
    [](const testing::TestParamInfo<Case>& test) { return std::string(test.param.name); });

TEST(Success, RaisesNothing) {
  EXPECT_NO_THROW(NS_CORBA::ThrowException(0));
  EXPECT_NO_THROW(NS_CORBA::ThrowException(0, ""));
  EXPECT_NO_THROW(NS_CORBA::ThrowException(0, "no room"));
}

TEST(ExplainedFailure, HasTheExplanationAsItsReasonOnce) {
  agent::explainFailure(agent::kInvalidName, "no EMS in the name");
  const Failure first = constructed(agent::kInvalidName);
  EXPECT_EQ(globaldefs::EXCPT_INVALID_INPUT, first.type);
  EXPECT_EQ("no EMS in the name", first.reason);
  EXPECT_EQ("malformed object name (code 1112801283)", constructed(agent::kInvalidName).reason);
}

TEST(ExplainedFailure, IsRaisedWithItsExplanation) {
  agent::explainFailure(agent::kInvalidName, "no EMS in the name");
  const auto failure = raisedBy([] { NS_CORBA::ThrowException(agent::kInvalidName); });
  ASSERT_TRUE(failure);
  EXPECT_EQ("no EMS in the name", failure->reason);
}

TEST(ExplainedFailure, PrefersTheTextOfTheCallerAndIsConsumed) {
  agent::explainFailure(agent::kInvalidName, "no EMS in the name");
  const auto failure = raisedBy([] { NS_CORBA::ThrowException(agent::kInvalidName, "no room"); });
  ASSERT_TRUE(failure);
  EXPECT_EQ("no room", failure->reason);
  EXPECT_EQ("malformed object name (code 1112801283)", constructed(agent::kInvalidName).reason);
}

TEST(ExplainedFailure, DoesNotExplainAnotherCode) {
  agent::explainFailure(agent::kInvalidName, "no EMS in the name");
  EXPECT_EQ("no such object (code 1112801284)", constructed(agent::kEntityNotFound).reason);
  EXPECT_EQ("malformed object name (code 1112801283)", constructed(agent::kInvalidName).reason);
}

TEST(ExplainedFailure, IsClearedByASuccess) {
  agent::explainFailure(agent::kInvalidName, "no EMS in the name");
  agent::explainFailure(0, "");
  EXPECT_EQ("malformed object name (code 1112801283)", constructed(agent::kInvalidName).reason);
}

TEST(ExplainedFailure, IsKeptPerThread) {
  agent::explainFailure(agent::kInvalidName, "no EMS in the name");
  std::string elsewhere;
  std::thread([&] { elsewhere = constructed(agent::kInvalidName).reason; }).join();
  EXPECT_EQ("malformed object name (code 1112801283)", elsewhere);
  EXPECT_EQ("no EMS in the name", constructed(agent::kInvalidName).reason);
}

}  // namespace
