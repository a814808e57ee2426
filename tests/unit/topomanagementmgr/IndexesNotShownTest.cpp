#include <gtest/gtest.h>

#include <vector>

#include "tests/fakes/Domain.h"
#include "topomanagementmgr/TopoManagementMgr.h"

namespace {

using fakes::indexes;
using NS_DOMAIN::NEIndex;

std::vector<std::int32_t> remaining(const std::vector<std::int32_t>& all,
                                    const std::vector<std::int32_t>& shown) {
  std::vector<std::int32_t> numbers;
  for (const NEIndex& each : TopoManagementMgr::indexesNotShown(indexes(all), indexes(shown))) {
    numbers.push_back(each.number);
  }
  return numbers;
}

using Numbers = std::vector<std::int32_t>;

TEST(TopoIndexesNotShown, SubtractsByNumberInOrder) {
  EXPECT_EQ(remaining({7, 5, 6}, {6, 9}), (Numbers{7, 5}));
}

TEST(TopoIndexesNotShown, KeepsDuplicates) {
  EXPECT_EQ(remaining({5, 6, 5, 7, 5}, {6}), (Numbers{5, 5, 7, 5}));
}

TEST(TopoIndexesNotShown, DropsEveryDuplicateOfAShownNumber) {
  EXPECT_EQ(remaining({6, 5, 6}, {6, 6}), Numbers{5});
}

TEST(TopoIndexesNotShown, KeepsAllWhenNothingIsShown) {
  EXPECT_EQ(remaining({1, 2}, {}), (Numbers{1, 2}));
}

TEST(TopoIndexesNotShown, IsEmptyWithoutIndexes) {
  EXPECT_EQ(remaining({}, {1}), Numbers{});
  EXPECT_EQ(remaining({}, {}), Numbers{});
}

TEST(TopoIndexesNotShown, DistinguishesNegativeNumbers) {
  EXPECT_EQ(remaining({-1, 1, 0}, {1}), (Numbers{-1, 0}));
}

TEST(TopoIndexesNotShown, ComparesOnlyTheNumberAndCopiesTheOtherField) {
  const std::vector<NEIndex> result = TopoManagementMgr::indexesNotShown(
      {fakes::index(5, 8), fakes::index(6, 9)}, {fakes::index(6, 0)});
  ASSERT_EQ(result.size(), 1U);
  EXPECT_EQ(result[0].first, 8);
  EXPECT_EQ(result[0].number, 5);
}

}  // namespace
