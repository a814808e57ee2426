#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <utility>
#include <vector>

#include "tests/property/Oracles.h"
#include "tests/property/Random.h"
#include "tests/support/CollidingKeys.h"
#include "topomanagementmgr/TopoManagementMgr.h"

namespace {

using NS_DOMAIN::NEIndex;
using Pairs = std::vector<std::pair<std::int32_t, std::int32_t>>;

Pairs pairsOf(const std::vector<NEIndex>& indexes) {
  Pairs pairs;
  for (const NEIndex& each : indexes) {
    pairs.emplace_back(each.first, each.number);
  }
  return pairs;
}

std::vector<NEIndex> randomIndexes(Random& random, int longest, int spread) {
  std::vector<NEIndex> indexes(static_cast<std::size_t>(random.number(0, longest)));
  for (NEIndex& each : indexes) {
    each.first = random.number(0, 3);
    each.number = random.number(-spread, spread);
  }
  return indexes;
}

// Sorted lists take the short way of the search.
std::vector<NEIndex> sometimesSorted(Random& random, std::vector<NEIndex> indexes) {
  if (random.number(0, 1) == 0) {
    std::sort(indexes.begin(), indexes.end(),
              [](const NEIndex& a, const NEIndex& b) { return a.number < b.number; });
  }
  return indexes;
}

TEST(TopoIndexesNotShownProperty, EqualsTheNestedLoop) {
  Random random;
  for (int round = 0; round < 5000; ++round) {
    const int spread = random.number(0, 30);
    const auto all = sometimesSorted(random, randomIndexes(random, 40, spread));
    const auto shown = sometimesSorted(random, randomIndexes(random, 40, spread));
    ASSERT_EQ(pairsOf(TopoManagementMgr::indexesNotShown(all, shown)),
              pairsOf(oracle::indexesNotShown(all, shown)))
        << "round " << round << " of seed " << random.seed();
  }
}

TEST(TopoIndexesNotShownProperty, EqualsTheNestedLoopForExtremeNumbers) {
  Random random;
  const std::vector<std::int32_t> extremes = {std::numeric_limits<std::int32_t>::min(), -1, 0, 1,
                                              std::numeric_limits<std::int32_t>::max()};
  for (int round = 0; round < 2000; ++round) {
    auto all = randomIndexes(random, 10, 2);
    auto shown = randomIndexes(random, 3, 2);
    for (auto* list : {&all, &shown}) {
      for (NEIndex& each : *list) {
        each.number = extremes[static_cast<std::size_t>(each.number + 2)];
      }
    }
    ASSERT_EQ(pairsOf(TopoManagementMgr::indexesNotShown(all, shown)),
              pairsOf(oracle::indexesNotShown(all, shown)))
        << "round " << round << " of seed " << random.seed();
  }
}

TEST(TopoIndexesNotShownProperty, CostsNoMoreForNumbersThatCollideInAPlainHash) {
  const auto cost = [](std::int32_t distance) {
    std::vector<NEIndex> indexes;
    for (std::size_t i = 1; i <= support::kCollidingNumbers; ++i) {
      indexes.push_back({0, static_cast<std::int32_t>(i) * distance});
    }
    return support::costOf(
        [&] { EXPECT_TRUE(TopoManagementMgr::indexesNotShown(indexes, indexes).empty()); });
  };
  const double usual = cost(1);
  EXPECT_PRED2(support::isComparable, cost(support::kCollidingNumbers), usual);
}

}  // namespace
