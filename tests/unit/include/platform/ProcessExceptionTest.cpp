#include <gtest/gtest.h>

#include <exception>
#include <type_traits>

#include "platform/framework/ProcessException.h"
#include "tests/fakes/Journal.h"

namespace {

void fill(ProcessException& failure) {
  failure.errorCode = -7;
  failure.line = 213;
  failure.file << "topomanagementmgr";
  failure.function << "unknown";
  failure.context << "context";
  failure.detail << "ErrCode:" << 7 << ",Detail:"
                 << "no such name";
}

void expectFilled(const ProcessException& failure) {
  EXPECT_EQ(failure.errorCode, -7);
  EXPECT_EQ(failure.line, 213);
  EXPECT_EQ(failure.file.str(), "topomanagementmgr");
  EXPECT_EQ(failure.function.str(), "unknown");
  EXPECT_EQ(failure.context.str(), "context");
  EXPECT_EQ(failure.detail.str(), "ErrCode:7,Detail:no such name");
}

void expectNoText(const ProcessException& failure) {
  EXPECT_EQ(failure.file.str(), "");
  EXPECT_EQ(failure.function.str(), "");
  EXPECT_EQ(failure.context.str(), "");
  EXPECT_EQ(failure.detail.str(), "");
}

TEST(FrameworkProcessException, StartsWithoutCodeLineAndTexts) {
  const ProcessException failure;
  EXPECT_EQ(failure.errorCode, 0);
  EXPECT_EQ(failure.line, 0);
  expectNoText(failure);
}

TEST(FrameworkProcessException, HasA32BitCodeAndLine) {
  static_assert(std::is_same_v<decltype(ProcessException::errorCode), std::int32_t>);
  static_assert(std::is_same_v<decltype(ProcessException::line), std::int32_t>);
  static_assert(std::has_virtual_destructor_v<ProcessException>);
  static_assert(std::is_base_of_v<std::exception, ProcessException>);
}

TEST(FrameworkProcessException, KeepsCodeLineAndAllFourTextsInACopy) {
  ProcessException original;
  fill(original);
  const ProcessException copy(original);
  expectFilled(copy);
  expectFilled(original);
}

TEST(FrameworkProcessException, IsCopiedFromNonConstReferencesOnly) {
  static_assert(std::is_constructible_v<ProcessException, ProcessException&>);
  static_assert(!std::is_constructible_v<ProcessException, const ProcessException&>);
}

TEST(FrameworkProcessException, AppendsToTheTextsOfACopy) {
  ProcessException original;
  fill(original);
  ProcessException copy(original);
  copy.detail << "!";
  EXPECT_EQ(copy.detail.str(), "ErrCode:7,Detail:no such name!");
  EXPECT_EQ(original.detail.str(), "ErrCode:7,Detail:no such name");
}

TEST(FrameworkProcessException, KeepsEverythingWhenItIsThrownAndCopiedFromTheHandler) {
  try {
    ProcessException original;
    fill(original);
    throw original;
  } catch (ProcessException& caught) {
    expectFilled(ProcessException(caught));
  }
}

TEST(FrameworkInterfaceNotExist, CarriesItsCodeAndNoText) {
  const InterfaceNotExistException failure;
  EXPECT_EQ(failure.errorCode, 0x41180004);
  EXPECT_EQ(failure.errorCode, 1092091908);
  EXPECT_EQ(failure.line, 0);
  expectNoText(failure);
}

TEST(FrameworkInterfaceNotExist, AddsNothingToAProcessException) {
  static_assert(std::is_base_of_v<ProcessException, InterfaceNotExistException>);
  static_assert(sizeof(InterfaceNotExistException) == sizeof(ProcessException));
}

TEST(FrameworkInterfaceNotExist, KeepsItsCodeInACopy) {
  InterfaceNotExistException original;
  const InterfaceNotExistException copy(original);
  EXPECT_EQ(copy.errorCode, 1092091908);
}

TEST(FrameworkInterfaceNotExist, IsCaughtAsAProcessException) {
  EXPECT_THROW(fakes::raiseInterfaceNotExist()(), ProcessException);
}

TEST(FrameworkInterfaceNotExist, IsCaughtInAnotherLibraryThanItsThrower) {
  EXPECT_THROW(fakes::raiseInterfaceNotExist()(), InterfaceNotExistException);
  EXPECT_THROW(fakes::raiseProcessException(3)(), ProcessException);
}

}  // namespace
