// Tests the default ThrowException with a ConstructException of this test program.

#include "platform/agent/Failures.h"

#include <gtest/gtest.h>

#include <string>

void NS_CORBA::ConstructException(CORBA::ULong code,
                                  globaldefs::ProcessingFailureException& exception) {
  exception.exceptionType = globaldefs::EXCPT_OBJECT_IN_USE;
  exception.errorReason = CORBA::string_dup(("code " + std::to_string(code)).c_str());
}

namespace {

std::string reasonOf(CORBA::ULong code, const std::string& text) {
  try {
    NS_CORBA::ThrowException(code, text);
  } catch (const globaldefs::ProcessingFailureException& failure) {
    EXPECT_EQ(failure.exceptionType, globaldefs::EXCPT_OBJECT_IN_USE);
    return failure.errorReason.in();
  }
  return "returned";
}

TEST(DefaultThrowException, ThrowsTheExceptionThatTheHostConstructs) {
  EXPECT_EQ(reasonOf(7, ""), "code 7");
  EXPECT_THROW(NS_CORBA::ThrowException(7), globaldefs::ProcessingFailureException);
}

TEST(DefaultThrowException, ReplacesTheReasonByAText) {
  EXPECT_EQ(reasonOf(7, "the node has children"), "the node has children");
}

TEST(DefaultThrowException, ReturnsForSuccess) {
  EXPECT_EQ(reasonOf(0, ""), "returned");
  EXPECT_EQ(reasonOf(0, "ignored"), "returned");
  EXPECT_NO_THROW(NS_CORBA::ThrowException(0));
}

}  // namespace
