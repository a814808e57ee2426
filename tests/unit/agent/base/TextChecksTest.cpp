#include "agent/base/TextChecks.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace {

using agent::findInvalidUtf8;

constexpr std::size_t kMostBefore = 20;  // more than two machine words

TEST(FindInvalidUtf8, AcceptsCharactersOfEveryLengthInEveryPlace) {
  for (std::size_t before = 0; before <= kMostBefore; ++before) {
    const std::string ascii(before, 'a');
    EXPECT_EQ(std::nullopt, findInvalidUtf8(ascii));
    for (const std::string character : {"\xc3\xa9", "\xe2\x82\xac", "\xf0\x9f\x98\x80"}) {
      EXPECT_EQ(std::nullopt, findInvalidUtf8(ascii + character));
      EXPECT_EQ(std::nullopt, findInvalidUtf8(ascii + character + character + ascii + character));
    }
  }
}

TEST(FindInvalidUtf8, ReturnsTheStartOfTheFirstInvalidCharacter) {
  for (std::size_t before = 0; before <= kMostBefore; ++before) {
    const std::string valid = std::string(before, 'a') + "\xc3\xa9";
    for (const std::string invalid :
         {"\x80", "\xff", "\xc3", "\xe2\x82", "\xc0\xaf", "\xed\xa0\x80"}) {
      for (const std::string after : {"", "a", "aaaaaaaaaaaaaaaaa\xff"}) {
        EXPECT_EQ(valid.size(), findInvalidUtf8(valid + invalid + after));
      }
    }
  }
}

}  // namespace
