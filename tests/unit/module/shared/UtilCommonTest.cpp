// The splitting of domain names that the other tests build on.

#include "platform/util/UtilCommon.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

namespace {

using NS_UTIL::Str2Int;
using NS_UTIL::UtilCommon;
using Parts = std::map<std::string, std::string>;

Parts split(const std::string& fdn) {
  Parts parts;
  UtilCommon::Instance()->GetSpliteFDNData(parts, fdn, ",");
  return parts;
}

TEST(PlatformUtilCommon, SplitsAnFdnIntoItsTerms) {
  EXPECT_EQ(split("OS=1,NE=5"), (Parts{{"NE", "5"}, {"OS", "1"}}));
  EXPECT_EQ(split("NE=a=b"), (Parts{{"NE", "a=b"}}));
}

TEST(PlatformUtilCommon, MakesNoPartOfATermWithoutAnEqualsSign) {
  EXPECT_EQ(split("12"), Parts());
  EXPECT_EQ(split(""), Parts());
  EXPECT_EQ(split("x,NE=5,"), (Parts{{"NE", "5"}}));
}

TEST(PlatformUtilCommon, KeepsTheFirstTermOfAClass) {
  EXPECT_EQ(split("NE=1,NE=2"), (Parts{{"NE", "1"}}));
}

TEST(PlatformUtilCommon, TakesTheClassOfTheLastTerm) {
  EXPECT_EQ(UtilCommon::Instance()->GetMoc("OS=1,NE=5"), "NE");
  EXPECT_EQ(UtilCommon::Instance()->GetMoc("NE=5,12"), "");
  EXPECT_EQ(UtilCommon::Instance()->GetMoc("12"), "");
  EXPECT_EQ(UtilCommon::Instance()->GetMoc(""), "");
}

TEST(PlatformUtilCommon, StoresTheNumberOfAPart) {
  int value = 7;
  EXPECT_TRUE(UtilCommon::Instance()->GetIntegerValueByName({{"NE", "-5"}}, "NE", value));
  EXPECT_EQ(value, -5);
}

TEST(PlatformUtilCommon, LeavesTheNumberAloneWhenThePartIsNone) {
  int value = 7;
  for (const char* text : {"", "x", "5x", "2147483648", "-"}) {
    EXPECT_FALSE(UtilCommon::Instance()->GetIntegerValueByName({{"NE", text}}, "NE", value));
  }
  EXPECT_FALSE(UtilCommon::Instance()->GetIntegerValueByName({}, "NE", value));
  EXPECT_EQ(value, 7);
}

TEST(PlatformStr2Int, ReadsLeadingDigits) {
  EXPECT_EQ(Str2Int("12"), 12);
  EXPECT_EQ(Str2Int("-12x"), -12);
  EXPECT_EQ(Str2Int("+3"), 3);
  EXPECT_EQ(Str2Int("x12"), 0);
  EXPECT_EQ(Str2Int(""), 0);
  EXPECT_EQ(Str2Int(" 12"), 0);
}

TEST(PlatformStr2Int, HoldsToTheLimits) {
  EXPECT_EQ(Str2Int("99999999999999999999"), 2147483647);
  EXPECT_EQ(Str2Int("-99999999999999999999"), -2147483647 - 1);
}

}  // namespace
