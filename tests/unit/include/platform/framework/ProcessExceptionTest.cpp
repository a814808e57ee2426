#include <gtest/gtest.h>

#include <exception>
#include <locale>
#include <memory>
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

TEST(FrameworkProcessException, IsDescribedByCodeAndDetail) {
  ProcessException failure;
  EXPECT_STREQ(failure.what(), "code 0");
  failure.errorCode = -7;
  EXPECT_STREQ(failure.what(), "code -7");
  failure.detail << "no such name: "
                 << "Zürich";
  EXPECT_STREQ(failure.what(), "code -7: no such name: Zürich");
}

TEST(FrameworkProcessException, OwnsItsDescription) {
  auto copied = std::make_unique<ProcessException>();
  fill(*copied);
  const char* const text = copied->what();
  ProcessException copy(*copied);
  copy.detail << "!";
  EXPECT_STREQ(copy.what(), "code -7: ErrCode:7,Detail:no such name!");
  EXPECT_STREQ(text, "code -7: ErrCode:7,Detail:no such name");
  copied.reset();
  EXPECT_STREQ(copy.what(), "code -7: ErrCode:7,Detail:no such name!");
}

TEST(FrameworkProcessException, KeepsItsDescriptionApartFromThatOfACopiedFormat) {
  ProcessException source;
  source.detail << "source";
  source.what();
  ProcessException target;
  target.detail << "target";
  target.what();
  target.context.copyfmt(source.context);
  target.context.imbue(std::locale::classic());
  EXPECT_STREQ(target.what(), "code 0: target");
  EXPECT_STREQ(source.what(), "code 0: source");
}

TEST(FrameworkProcessException, IsDescribedToHandlersOfStandardExceptions) {
  try {
    fakes::raiseProcessException(3)();
    FAIL() << "no exception";
  } catch (const std::exception& failure) {
    EXPECT_STREQ(failure.what(), "code 3");
  }
}

// Module and host may be compiled with different versions of the header.
TEST(FrameworkProcessException, HasNoRoomForItsDescription) {
  struct Layout : std::exception {
    std::int32_t numbers[2];
    std::ostringstream texts[4];
  };
  static_assert(sizeof(ProcessException) == sizeof(Layout));
}

TEST(FrameworkInterfaceNotExist, IsDescribedByItsCodeAndItsMeaning) {
  EXPECT_STREQ(InterfaceNotExistException().what(),
               "code 1092091908: no bundle publishes the service interface");
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
