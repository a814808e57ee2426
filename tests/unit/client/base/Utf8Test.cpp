#include "client/base/Utf8.h"

#include <gtest/gtest.h>

namespace topoctl {
namespace {

TEST(Utf8, ValidUtf8KeepsValidTexts) {
  EXPECT_EQ(validUtf8(""), "");
  EXPECT_EQ(validUtf8("plain"), "plain");
  EXPECT_EQ(validUtf8("Z\u00fcrich \u6771\u4eac \U0001F600 \x01\x7f\n"),
            "Z\u00fcrich \u6771\u4eac \U0001F600 \x01\x7f\n");
  EXPECT_EQ(validUtf8("\u0080 \u07ff \u0800 \ud7ff \ue000 \uffff \U00010000 \U0010ffff"),
            "\u0080 \u07ff \u0800 \ud7ff \ue000 \uffff \U00010000 \U0010ffff");
}

TEST(Utf8, ValidUtf8ReplacesEachInvalidSequenceByOneReplacementCharacter) {
  EXPECT_EQ(validUtf8("Z\xfcrich"), "Z\ufffdrich");                      // ISO-8859-1
  EXPECT_EQ(validUtf8("\xe6\x9d"), "\ufffd");                            // cut off at the end
  EXPECT_EQ(validUtf8("\xe6\x9d|"), "\ufffd|");                          // cut off in the middle
  EXPECT_EQ(validUtf8("\x80\xbf"), "\ufffd\ufffd");                      // no lead byte
  EXPECT_EQ(validUtf8("\xff\xfe"), "\ufffd\ufffd");                      // never in UTF-8
  EXPECT_EQ(validUtf8("\xc0\xaf"), "\ufffd\ufffd");                      // overlong, two bytes
  EXPECT_EQ(validUtf8("\xe0\x80\xaf"), "\ufffd\ufffd\ufffd");            // overlong, three bytes
  EXPECT_EQ(validUtf8("\xed\xa0\x80"), "\ufffd\ufffd\ufffd");            // a surrogate
  EXPECT_EQ(validUtf8("\xf4\x90\x80\x80"), "\ufffd\ufffd\ufffd\ufffd");  // beyond U+10FFFF
}

TEST(Utf8, EscapeControlsKeepsOneLine) {
  EXPECT_EQ(escapeControls("a\nb\r\tc"), "a\\nb\\r\\tc");
  EXPECT_EQ(escapeControls("\x1b[31mred\x7f\x01"), "\\x1b[31mred\\x7f\\x01");
  EXPECT_EQ(escapeControls("\u009b31m\u202ereversed\u2028"), "\\u009b31m\\u202ereversed\\u2028");
  EXPECT_EQ(escapeControls("Z\u00fcrich \xff"), "Z\u00fcrich \ufffd");
}

TEST(Utf8, DisplayWidthCountsTerminalColumns) {
  EXPECT_EQ(displayWidth(""), 0U);
  EXPECT_EQ(displayWidth("plain"), 5U);
  EXPECT_EQ(displayWidth("Z\u00fcrich"), 6U);
  EXPECT_EQ(displayWidth("\u6771\u4eac"), 4U);
  EXPECT_EQ(displayWidth("u\u0308"), 1U);  // a combining diaeresis
  EXPECT_EQ(displayWidth("\U0001F600"), 2U);
}

TEST(Utf8, CutsByDisplayWidth) {
  EXPECT_EQ(cutEnd("plain", 5), "plain");
  EXPECT_EQ(cutEnd("plain", 4), "pla\u2026");
  EXPECT_EQ(cutBegin("plain", 5), "plain");
  EXPECT_EQ(cutBegin("plain", 4), "\u2026ain");
  EXPECT_EQ(cutEnd("plain", 1), "\u2026");
  EXPECT_EQ(cutBegin("plain", 1), "\u2026");
}

TEST(Utf8, CutsNoCharacterInTwo) {
  EXPECT_EQ(cutEnd("\u6771\u4eac\u90fd", 4), "\u6771\u2026");
  EXPECT_EQ(cutBegin("\u6771\u4eac\u90fd", 4), "\u2026\u90fd");
  EXPECT_EQ(cutEnd("au\u0308bcd", 3), "au\u0308\u2026");
  EXPECT_EQ(cutBegin("abu\u0308c", 2), "\u2026c");
  EXPECT_EQ(cutBegin("abu\u0308c", 3), "\u2026u\u0308c");
}

}  // namespace
}  // namespace topoctl
