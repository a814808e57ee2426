#include "topomanagementmgr/TextIndex.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using topo::TextIndex;

TEST(TopoTextIndex, NumbersTextsInTheOrderOfTheirAddition) {
  TextIndex index;
  EXPECT_EQ(index.add("b"), 0U);
  EXPECT_EQ(index.add(""), 1U);
  EXPECT_EQ(index.add("a"), 2U);
}

TEST(TopoTextIndex, AddsAnEqualTextOnce) {
  TextIndex index;
  const std::string one = "text";
  const std::string other = "text";
  EXPECT_EQ(index.add(one), 0U);
  EXPECT_EQ(index.add(other), 0U);
  EXPECT_EQ(index.add("next"), 1U);
}

TEST(TopoTextIndex, FindsNoTextThatWasNotAdded) {
  TextIndex index;
  EXPECT_EQ(index.find("a"), TextIndex::kNone);
  index.add("a");
  EXPECT_EQ(index.find("b"), TextIndex::kNone);
  EXPECT_EQ(index.find("a"), 0U);
}

TEST(TopoTextIndex, FindsEveryTextAfterItHasGrown) {
  constexpr std::uint32_t kMany = 3000;
  std::vector<std::string> texts;
  for (std::uint32_t i = 0; i < kMany; ++i) {
    texts.push_back(std::to_string(i));
  }
  TextIndex index;
  for (std::uint32_t i = 0; i < kMany; ++i) {
    ASSERT_EQ(index.add(texts[i]), i);
  }
  for (std::uint32_t i = 0; i < kMany; ++i) {
    ASSERT_EQ(index.find(texts[i]), i);
    ASSERT_EQ(index.add(texts[i]), i);
  }
}

}  // namespace
