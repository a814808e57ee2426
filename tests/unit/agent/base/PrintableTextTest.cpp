#include "agent/base/PrintableText.h"

#include <gtest/gtest.h>

namespace {

using agent::printable;

TEST(PrintableText, KeepsHarmlessCharacters) {
  EXPECT_EQ("Köln 😀 \"x\"", printable("Köln 😀 \"x\""));
}

TEST(PrintableText, EscapesControlsAndLineSeparators) {
  EXPECT_EQ("\\x00\\x0a\\x0d\\x1b\\x7f", printable(std::string_view("\0\n\r\x1b\x7f", 5)));
  EXPECT_EQ("\\xc2\\x85", printable("\u0085"));
  EXPECT_EQ("\\xe2\\x80\\xa8\\xe2\\x80\\xa9", printable("\u2028\u2029"));
}

TEST(PrintableText, EscapesCharactersThatChangeTheWritingDirection) {
  EXPECT_EQ("\\xe2\\x80\\xaa\\xe2\\x80\\xae", printable("\u202A\u202E"));
  EXPECT_EQ("\\xe2\\x81\\xa6\\xe2\\x81\\xa9", printable("\u2066\u2069"));
  EXPECT_EQ("\\xe2\\x80\\x8e\\xe2\\x80\\x8f\\xd8\\x9c", printable("\u200E\u200F\u061C"));
}

TEST(PrintableText, EscapesInvisibleCharacters) {
  EXPECT_EQ("a\\xe2\\x80\\x8bb\\xef\\xbb\\xbf", printable("a\u200Bb\uFEFF"));
  EXPECT_EQ("\\xf3\\xa0\\x80\\xa0", printable("\U000E0020"));
  EXPECT_EQ("a\u200Db", printable("a\u200Db"));
}

TEST(PrintableText, DoublesBackslashesInEscapedText) {
  EXPECT_EQ("\\\\x1b\\x1b\\\\", agent::escaped("\\x1b\x1b\\", 100));
  EXPECT_EQ("\\x1b", printable("\\x1b"));
  EXPECT_EQ("a\\\\...", agent::escaped("a\\b", 2));
}

TEST(PrintableText, EscapesBytesThatAreNotUtf8) {
  EXPECT_EQ("a\\xff\\xc3", printable("a\xff\xc3"));
}

TEST(PrintableText, CutsBetweenCharacters) {
  EXPECT_EQ("aé...", printable("aéb", 2));
  EXPECT_EQ("aé", printable("aé", 3));
}

}  // namespace
