#include "client/base/ShellLine.h"

#include <gtest/gtest.h>

namespace topoctl {
namespace {

using Words = std::vector<std::string>;

TEST(ShellLine, SplitsAtBlanks) {
  EXPECT_EQ(splitShellLine("topoctl  node\tdel").words, (Words{"topoctl", "node", "del"}));
}

TEST(ShellLine, HasAnEmptyLastWordAfterABlank) {
  EXPECT_EQ(splitShellLine("topoctl ").words, (Words{"topoctl", ""}));
  EXPECT_EQ(splitShellLine("").words, (Words{""}));
}

TEST(ShellLine, RemovesQuotesAndBackslashes) {
  EXPECT_EQ(splitShellLine(R"(a "b c" 'd e'f g\ h "i\"j\k" '')").words,
            (Words{"a", "b c", "d ef", "g h", "i\"j\\k", ""}));
}

TEST(ShellLine, SaysWhichQuoteIsOpen) {
  EXPECT_EQ(splitShellLine("get \"a b").quote, ShellQuote::kDouble);
  EXPECT_EQ(splitShellLine("get 'a b").quote, ShellQuote::kSingle);
  EXPECT_EQ(splitShellLine("get 'a' b").quote, ShellQuote::kNone);
  EXPECT_EQ(splitShellLine("get \"a b").words, (Words{"get", "a b"}));
}

TEST(ShellLine, SaysWhetherTheLastWordExpands) {
  for (const char* const line : {"a $", "a \"x$", "a `", "a x!", "a \"!"}) {
    EXPECT_TRUE(splitShellLine(line).expands) << line;
  }
  for (const char* const line : {"a '$", "a \\$", "a \"\\$", "$a b", "`a` ", "a '!`"}) {
    EXPECT_FALSE(splitShellLine(line).expands) << line;
  }
}

TEST(ShellLine, ExpandsNothing) {
  EXPECT_EQ(splitShellLine("$(id) `id` $HOME ~ *").words,
            (Words{"$(id)", "`id`", "$HOME", "~", "*"}));
}

TEST(ShellLine, QuotesEveryCharacterThatTheShellInterprets) {
  EXPECT_EQ(shellQuoted("NE=5/a:b_c.d-e", ShellQuote::kNone), "NE=5/a:b_c.d-e");
  EXPECT_EQ(shellQuoted("M\xc3\xbcnchen", ShellQuote::kNone), "M\xc3\xbcnchen");
  EXPECT_EQ(shellQuoted("a b;$(id)", ShellQuote::kNone), R"(a\ b\;\$\(id\))");
  EXPECT_EQ(shellQuoted("it's", ShellQuote::kSingle), R"(it'\''s)");
  EXPECT_EQ(shellQuoted("a \"$x`\\", ShellQuote::kDouble), R"(a \"\$x\`\\)");
  EXPECT_EQ(shellQuoted("a!b", ShellQuote::kDouble), R"(a"'!'"b)");
}

TEST(ShellLine, ReadsItsOwnQuotes) {
  std::string text;
  for (char c = ' '; c < 127; ++c) {
    text += c;
  }
  EXPECT_EQ(splitShellLine(shellQuoted(text, ShellQuote::kNone)).words, Words{text});
  EXPECT_EQ(splitShellLine("'" + shellQuoted(text, ShellQuote::kSingle) + "'").words, Words{text});
  EXPECT_EQ(splitShellLine("\"" + shellQuoted(text, ShellQuote::kDouble) + "\"").words,
            Words{text});
}

}  // namespace
}  // namespace topoctl
