#include "agent/network/NetworkChange.h"

#include <gtest/gtest.h>

namespace {

using agent::InfoPairs;
using agent::mergedInfo;

TEST(MergedInfo, ReplacesAValueInPlace) {
  EXPECT_EQ((InfoPairs{{"a", "3"}, {"b", "2"}}),
            mergedInfo({{"a", "1"}, {"b", "2"}}, {{"a", "3"}}));
}

TEST(MergedInfo, AppendsNewNamesInTheirOrder) {
  EXPECT_EQ((InfoPairs{{"a", "1"}, {"z", "2"}, {"b", "3"}}),
            mergedInfo({{"a", "1"}}, {{"z", "2"}, {"b", "3"}}));
}

TEST(MergedInfo, RemovesTheNamesOfEmptyValues) {
  EXPECT_EQ((InfoPairs{{"b", "2"}}), mergedInfo({{"a", "1"}, {"b", "2"}}, {{"a", ""}, {"c", ""}}));
}

TEST(MergedInfo, KeepsThePairsWithoutChanges) {
  EXPECT_EQ((InfoPairs{{"a", "1"}}), mergedInfo({{"a", "1"}}, {}));
}

}  // namespace
