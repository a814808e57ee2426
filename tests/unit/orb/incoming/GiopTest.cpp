// Parsing of the heads of GIOP requests.

#include "orb/incoming/giop.h"

#include <gtest/gtest.h>

#include "tests/support/ProcessorTime.h"
#include "tests/unit/orb/RawClient.h"

namespace {

using orb_tests::Message;
using std::chrono::milliseconds;
using Type = Message::Type;

// Parsing that continued after the end of the bytes would take seconds of processor time.
constexpr std::uint32_t kDeclared = 0x08000000;
constexpr milliseconds kMuch{100};

void expectQuickRejection(const std::string& bytes) {
  const auto header = orb::giop::parseHeader(bytes.data());
  ASSERT_TRUE(header.has_value());
  const auto begin = support::processorTime();
  EXPECT_FALSE(orb::giop::parseRequestHead(*header, bytes).has_value());
  EXPECT_LT(support::processorTime() - begin, kMuch);
}

TEST(RequestHead, IsRejectedAtTheFirstMissingProfileOfTheTarget) {
  constexpr std::uint32_t kReferenceTarget = 2;
  expectQuickRejection(Message(2, Type::kRequest, false)
                           .number(1)  // the id
                           .number(3)  // response flags
                           .number(kReferenceTarget)
                           .number(0)  // the selected profile
                           .text("IDL:a:1.0")
                           .number(kDeclared)
                           .bytes());
}

TEST(RequestHead, IsRejectedAtTheFirstMissingServiceContext) {
  expectQuickRejection(Message(0, Type::kRequest, false).number(kDeclared).bytes());
}

}  // namespace
