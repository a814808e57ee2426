#include "client/base/Decimal.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace topoctl {
namespace {

TEST(ClientDecimal, IsTheWholeText) {
  EXPECT_EQ(parseDecimal<std::uint32_t>("0"), 0U);
  EXPECT_EQ(parseDecimal<std::uint32_t>("4294967295"), 4294967295U);
  EXPECT_EQ(parseDecimal<std::int32_t>("-2147483648"), -2147483648LL);
}

TEST(ClientDecimal, IsEmptyForAnyOtherText) {
  for (const char* const text :
       {"", "-", "-1", "+1", " 1", "1 ", "1.5", "1e3", "0x10", "4294967296"}) {
    EXPECT_EQ(parseDecimal<std::uint32_t>(text), std::nullopt) << text;
  }
}

}  // namespace
}  // namespace topoctl
