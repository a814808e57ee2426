#include "agent/base/Text.h"

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

TEST(Text, HasCharactersThatChangeTheWritingDirectionEscaped) {
  EXPECT_EQ("\\xe2\\x80\\xaa\\xe2\\x80\\xae", printable("\u202A\u202E"));
  EXPECT_EQ("\\xe2\\x81\\xa6\\xe2\\x81\\xa9", printable("\u2066\u2069"));
  EXPECT_EQ("\\xe2\\x80\\x8e\\xe2\\x80\\x8f\\xd8\\x9c", printable("\u200E\u200F\u061C"));
}

TEST(Text, HasInvisibleCharactersEscaped) {
  EXPECT_EQ("a\\xe2\\x80\\x8bb\\xef\\xbb\\xbf", printable("a\u200Bb\uFEFF"));
  EXPECT_EQ("\\xf3\\xa0\\x80\\xa0", printable("\U000E0020"));
  EXPECT_EQ("a\u200Db", printable("a\u200Db"));
}

TEST(Text, IsEscapedUnambiguously) {
  EXPECT_EQ("\\\\x1b\\x1b\\\\", agent::escaped("\\x1b\x1b\\", 100));
  EXPECT_EQ("\\x1b", printable("\\x1b"));
  EXPECT_EQ("a\\\\...", agent::escaped("a\\b", 2));
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
