#include "platform/util/UtilCommon.h"

#include <gtest/gtest.h>

namespace {

using NS_UTIL::Str2Int;
using NS_UTIL::UtilCommon;
using Parts = std::map<std::string, std::string>;

Parts split(const std::string& fdn, const std::string& separator = ",") {
  Parts parts;
  UtilCommon::Instance()->GetSpliteFDNData(parts, fdn, separator);
  return parts;
}

bool readsInteger(const std::string& text, int& value) {
  return UtilCommon::Instance()->GetIntegerValueByName({{"NE", text}}, "NE", value);
}

TEST(UtilCommon, SplitsAnFdnIntoClassesAndValues) {
  EXPECT_EQ((Parts{{"OS", "1"}, {"NE", "5"}}), split("OS=1,NE=5"));
  EXPECT_EQ((Parts{{"OS", "1"}, {"NE", "5"}}), split("OS=1::NE=5", "::"));
}

TEST(UtilCommon, SplitsATermAtItsFirstEqualsSign) {
  EXPECT_EQ((Parts{{"a", "b=c"}, {"", "x"}, {"e", ""}}), split("a=b=c,=x,e="));
}

TEST(UtilCommon, GivesNoPartForATermWithoutEqualsSign) {
  EXPECT_EQ(Parts{}, split("12"));
  EXPECT_EQ(Parts{}, split(""));
  EXPECT_EQ((Parts{{"NE", "5"}}), split(",,x,NE=5,"));
}

TEST(UtilCommon, KeepsTheFirstOfSeveralTermsOfOneClass) {
  EXPECT_EQ((Parts{{"NE", "1"}}), split("NE=1,NE=2"));
}

TEST(UtilCommon, AddsToExistingParts) {
  Parts parts{{"NE", "9"}, {"X", "y"}};
  UtilCommon::Instance()->GetSpliteFDNData(parts, "NE=1,OS=2", ",");
  EXPECT_EQ((Parts{{"NE", "9"}, {"X", "y"}, {"OS", "2"}}), parts);
}

TEST(UtilCommon, TreatsAnFdnWithoutASeparatorAsOneTerm) {
  EXPECT_EQ((Parts{{"a", "b,c=d"}}), split("a=b,c=d", ""));
}

TEST(UtilCommon, ReturnsTheClassOfTheLastTerm) {
  EXPECT_EQ("NE", UtilCommon::Instance()->GetMoc("OS=1,NE=5"));
  EXPECT_EQ("NE", UtilCommon::Instance()->GetMoc("NE="));
}

TEST(UtilCommon, ReturnsNoClassForALastTermWithoutEqualsSign) {
  for (const char* fdn : {"", "12", "NE=5,x", "NE=5,", ",", "=5"}) {
    EXPECT_EQ("", UtilCommon::Instance()->GetMoc(fdn)) << fdn;
  }
}

TEST(UtilCommon, ReadsTheIntegerOfAPart) {
  int value = -7;
  EXPECT_TRUE(readsInteger("5", value));
  EXPECT_EQ(5, value);
  EXPECT_TRUE(readsInteger("-2147483648", value));
  EXPECT_EQ(-2147483647 - 1, value);
  EXPECT_TRUE(readsInteger("+2147483647", value));
  EXPECT_EQ(2147483647, value);
}

TEST(UtilCommon, KeepsTheValueWithoutThePart) {
  int value = -7;
  EXPECT_FALSE(UtilCommon::Instance()->GetIntegerValueByName({{"ONE", "5"}}, "NE", value));
  EXPECT_EQ(-7, value);
}

TEST(UtilCommon, KeepsTheValueForAPartThatIsNotAnInteger) {
  int value = -7;
  for (const char* text : {"", "-", "x", "5x", " 5", "5 ", "1.5", "2147483648", "-2147483649"}) {
    EXPECT_FALSE(readsInteger(text, value)) << text;
    EXPECT_EQ(-7, value);
  }
}

TEST(Str2Int, ReadsTheLeadingDigits) {
  EXPECT_EQ(12, Str2Int("12"));
  EXPECT_EQ(12, Str2Int("12abc"));
  EXPECT_EQ(12, Str2Int("12=13"));
  EXPECT_EQ(-12, Str2Int("-12"));
  EXPECT_EQ(12, Str2Int("+12"));
  EXPECT_EQ(7, Str2Int("007"));
}

TEST(Str2Int, IsZeroWithoutLeadingDigits) {
  for (const char* text : {"", "-", "+", "x12", " 12", "+-1"}) {
    EXPECT_EQ(0, Str2Int(text)) << text;
  }
}

TEST(Str2Int, IsClampedTo32Bits) {
  EXPECT_EQ(2147483647, Str2Int("2147483648"));
  EXPECT_EQ(-2147483647 - 1, Str2Int("-2147483649"));
  EXPECT_EQ(2147483647, Str2Int(std::string(1000, '9')));
  EXPECT_EQ(-2147483647 - 1, Str2Int('-' + std::string(1000, '9')));
}

}  // namespace
