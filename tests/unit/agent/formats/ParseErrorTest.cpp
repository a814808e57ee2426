#include "agent/formats/ParseError.h"

#include <gtest/gtest.h>

namespace {

TEST(LinePlace, CountsLinesAndCharacters) {
  EXPECT_EQ("1:1", agent::linePlace("", 0));
  EXPECT_EQ("1:3", agent::linePlace("éab", 3));
  EXPECT_EQ("2:1", agent::linePlace("a\nb", 2));
  EXPECT_EQ("2:2", agent::linePlace("a\nb", 99));
}

}  // namespace
