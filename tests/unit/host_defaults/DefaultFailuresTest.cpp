// The default ConstructException, in a program that defines no ConstructException.

#include <gtest/gtest.h>

#include "platform/agent/Failures.h"
#include "platform/framework/ProcessException.h"

namespace {

TEST(DefaultConstructException, NamesTheCodesOfTheModule) {
  globaldefs::ProcessingFailureException exception;
  NS_CORBA::ConstructException(NS_CORBA::ERR_TOPO_CONVERSION, exception);
  EXPECT_EQ(exception.exceptionType, globaldefs::EXCPT_INTERNAL_ERROR);
  EXPECT_STREQ(exception.errorReason.in(),
               "the result could not be converted or iterated (code 1092092090)");
  NS_CORBA::ConstructException(
      static_cast<CORBA::ULong>(InterfaceNotExistException::kInterfaceNotExist), exception);
  EXPECT_EQ(exception.exceptionType, globaldefs::EXCPT_INTERNAL_ERROR);
  EXPECT_STREQ(exception.errorReason.in(), "a platform service is missing (code 1092091908)");
}

TEST(DefaultConstructException, TakesEveryOtherCodeForAnInternalError) {
  globaldefs::ProcessingFailureException exception;
  NS_CORBA::ConstructException(7, exception);
  EXPECT_EQ(exception.exceptionType, globaldefs::EXCPT_INTERNAL_ERROR);
  EXPECT_STREQ(exception.errorReason.in(), "platform failure (code 7)");
}

}  // namespace
