#include "fdn/Fdn.h"

#include <gtest/gtest.h>

namespace {

using fdn::canonicalNumber;

TEST(CanonicalNumber, AcceptsDecimalDigits) {
  EXPECT_EQ(0, canonicalNumber("0"));
  EXPECT_EQ(7, canonicalNumber("7"));
  EXPECT_EQ(2147483647, canonicalNumber("2147483647"));
}

TEST(CanonicalNumber, RejectsEveryOtherSpelling) {
  for (const char* text : {"", "-1", "+1", "-0", "00", "01", " 1", "1 ", "1a", "0x1", "1.0",
                           "2147483648", "99999999999999999999", "١"}) {
    EXPECT_FALSE(canonicalNumber(text).has_value()) << text;
  }
}

TEST(WholeNumber, RejectsNumbersBeyondTheLimitsThatBeginAsALimit) {
  EXPECT_EQ(2147483647, fdn::wholeNumber("2147483647"));
  EXPECT_FALSE(fdn::wholeNumber("21474836470").has_value());
  EXPECT_EQ(-2147483647 - 1, fdn::wholeNumber("-2147483648"));
  EXPECT_FALSE(fdn::wholeNumber("-21474836480").has_value());
}

}  // namespace
