#include "agent/domain/Text.h"

#include <gtest/gtest.h>

namespace {

using agent::canonicalNumber;
using agent::printable;

TEST(Text, IsPrintedAsItIsWhenHarmless) {
  EXPECT_EQ("Köln 😀 \"x\"", printable("Köln 😀 \"x\""));
}

TEST(Text, HasItsControlsAndLineSeparatorsEscaped) {
  EXPECT_EQ("\\x00\\x0a\\x0d\\x1b\\x7f", printable(std::string_view("\0\n\r\x1b\x7f", 5)));
  EXPECT_EQ("\\xc2\\x85", printable("\u0085"));
  EXPECT_EQ("\\xe2\\x80\\xa8\\xe2\\x80\\xa9", printable("\u2028\u2029"));
}

TEST(Text, HasBytesThatAreNoUtf8Escaped) {
  EXPECT_EQ("a\\xff\\xc3", printable("a\xff\xc3"));
}

TEST(Text, IsCutBetweenCharacters) {
  EXPECT_EQ("aé...", printable("aéb", 2));
  EXPECT_EQ("aé", printable("aé", 3));
}

TEST(Text, KnowsTheCanonicalNumbers) {
  EXPECT_EQ(0, canonicalNumber("0"));
  EXPECT_EQ(7, canonicalNumber("7"));
  EXPECT_EQ(2147483647, canonicalNumber("2147483647"));
}

TEST(Text, KnowsNoOtherNumbers) {
  for (const char* text : {"", "-1", "+1", "-0", "00", "01", " 1", "1 ", "1a", "0x1", "1.0",
                           "2147483648", "99999999999999999999", "١"}) {
    EXPECT_FALSE(canonicalNumber(text).has_value()) << text;
  }
}

TEST(Text, PlacesAnOffsetByLineAndCharacter) {
  EXPECT_EQ("1:1", agent::linePlace("", 0));
  EXPECT_EQ("1:3", agent::linePlace("éab", 3));
  EXPECT_EQ("2:1", agent::linePlace("a\nb", 2));
  EXPECT_EQ("2:2", agent::linePlace("a\nb", 99));
}

}  // namespace
