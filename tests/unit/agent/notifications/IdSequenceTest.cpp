#include "agent/notifications/IdSequence.h"

#include <gtest/gtest.h>

#include <vector>

#include "tests/unit/agent/notifications/Events.h"

namespace {

using agent::Gap;
using agent::IdSequence;
using notification_tests::idOf;

using Ids = std::vector<std::uint64_t>;

constexpr std::uint64_t kNoChange = IdSequence::kNoChange;

// Takes an id for one notification of each change.
Ids take(IdSequence& sequence, const std::vector<std::uint64_t>& changes) {
  Ids taken;
  for (const std::uint64_t change : changes) {
    taken.push_back(sequence.next(change).value_or(0));
  }
  return taken;
}

// Takes all ids of a change except the last position, the id of a gap.
void exhaust(IdSequence& sequence, std::uint64_t change) {
  for (std::uint64_t position = 1; position < IdSequence::kLastPosition; ++position) {
    ASSERT_EQ(idOf(change, position), sequence.next(change));
  }
}

void expectGap(const IdSequence& sequence, std::uint64_t id, const Gap& expected) {
  SCOPED_TRACE(id);
  const std::optional<Gap> gap = sequence.gapSince(id);
  ASSERT_TRUE(gap);
  EXPECT_EQ(expected.first, gap->first);
  EXPECT_EQ(expected.last, gap->last);
  EXPECT_EQ(expected.count, gap->count);
}

TEST(IdSequence, CountsPositionsFromOneInEachChange) {
  IdSequence sequence(10, {});
  EXPECT_EQ((Ids{idOf(11, 1), idOf(11, 2), idOf(12, 1), idOf(20, 1), idOf(20, 2)}),
            take(sequence, {11, 11, 12, 20, 20}));
  EXPECT_EQ(idOf(20, 2), sequence.last());
}

TEST(IdSequence, BeginsBetweenTheLastChangeAndTheNext) {
  IdSequence sequence(10, {});
  EXPECT_EQ(idOf(10, 0), sequence.last());
  EXPECT_EQ(idOf(10, 1), sequence.next(kNoChange));
}

TEST(IdSequence, ContinuesTheLastChangeOutsideOfAChange) {
  IdSequence sequence(10, {});
  EXPECT_EQ((Ids{idOf(11, 1), idOf(11, 2), idOf(12, 1)}), take(sequence, {11, kNoChange, 12}));
}

TEST(IdSequence, RisesWhenAnOlderChangeIsHandledLater) {
  IdSequence sequence(10, {});
  EXPECT_EQ((Ids{idOf(13, 1), idOf(13, 2), idOf(13, 3), idOf(14, 1)}),
            take(sequence, {13, 12, 13, 14}));
}

TEST(IdSequence, FitsIn63BitsWithTheLastChange) {
  IdSequence sequence(0, {});
  EXPECT_EQ((std::uint64_t{1} << 63) - (1 << 20) + 1, sequence.next(IdSequence::kLastChange));
  EXPECT_EQ((std::uint64_t{1} << 63) - (1 << 20) + 2, sequence.next(~std::uint64_t{0}));
}

TEST(IdSequence, UsesTheLastPositionForAllNotificationsWithoutAPosition) {
  IdSequence sequence(10, {});
  exhaust(sequence, 11);
  for (int i = 0; i < 3; ++i) {
    EXPECT_FALSE(sequence.next(11));
    EXPECT_EQ(idOf(11, IdSequence::kLastPosition), sequence.last());
  }
  EXPECT_EQ(idOf(11, IdSequence::kLastPosition), sequence.nextForGap());
  EXPECT_EQ(idOf(12, 1), sequence.next(12));
}

TEST(IdSequence, ReportsTheLastPositionAgainBecauseItsGapMayHaveGrown) {
  IdSequence sequence(10, {});
  exhaust(sequence, 11);
  sequence.next(11);
  const std::uint64_t last = idOf(11, IdSequence::kLastPosition);
  expectGap(sequence, last, {last, last, 0});
  sequence.next(12);
  expectGap(sequence, last, {last + 1, idOf(12, 1), 0});
  expectGap(sequence, last + 1, {last + 2, idOf(12, 1), 1});
}

TEST(IdSequence, HasNoGapSinceTheLastId) {
  IdSequence sequence(10, {});
  EXPECT_FALSE(sequence.gapSince(idOf(10, 0)));
  take(sequence, {11, 12});
  EXPECT_FALSE(sequence.gapSince(idOf(12, 1)));
  sequence.nextForGap();
  EXPECT_FALSE(sequence.gapSince(idOf(12, 2)));
}

TEST(IdSequence, CountsTheNotificationsSinceAnId) {
  IdSequence sequence(10, {});
  take(sequence, {11, 11, 11, 12, 15, 15});
  const std::uint64_t last = idOf(15, 2);
  expectGap(sequence, idOf(10, 0), {idOf(10, 1), last, 6});
  expectGap(sequence, idOf(11, 1), {idOf(11, 2), last, 5});
  expectGap(sequence, idOf(11, 3), {idOf(11, 4), last, 3});
  expectGap(sequence, idOf(11, 9), {idOf(11, 10), last, 3});
  expectGap(sequence, idOf(12, 1), {idOf(12, 2), last, 2});
  expectGap(sequence, idOf(13, 7), {idOf(13, 8), last, 2});
  expectGap(sequence, idOf(15, 1), {idOf(15, 2), last, 1});
}

TEST(IdSequence, CountsNothingSinceAnIdOfAnEarlierRun) {
  IdSequence sequence(10, {});
  take(sequence, {11});
  expectGap(sequence, idOf(9, 1), {idOf(9, 2), idOf(11, 1), 0});
  expectGap(sequence, idOf(10, 0) - 1, {idOf(10, 0), idOf(11, 1), 0});
}

TEST(IdSequence, CountsNothingAcrossAGap) {
  IdSequence sequence(10, {});
  take(sequence, {11});
  EXPECT_EQ(idOf(11, 2), sequence.nextForGap());
  take(sequence, {11, 12});
  expectGap(sequence, idOf(11, 1), {idOf(11, 2), idOf(12, 1), 0});
  expectGap(sequence, idOf(11, 2), {idOf(11, 3), idOf(12, 1), 2});
}

TEST(IdSequence, ForgetsTheOlderHalfOfAFullHistory) {
  IdSequence sequence(10, {IdSequence::kLastPosition, 4});
  take(sequence, {11, 12, 13, 14});
  expectGap(sequence, idOf(10, 0), {idOf(10, 1), idOf(14, 1), 4});
  take(sequence, {15});
  expectGap(sequence, idOf(12, 1), {idOf(12, 2), idOf(15, 1), 0});
  expectGap(sequence, idOf(13, 0), {idOf(13, 1), idOf(15, 1), 3});
  expectGap(sequence, idOf(14, 1), {idOf(14, 2), idOf(15, 1), 1});
}

TEST(IdSequence, RemembersAHundredThousandChanges) {
  IdSequence sequence(10, {});
  const std::uint64_t newest = 10 + 600000;
  for (std::uint64_t change = 11; change <= newest; ++change) {
    sequence.next(change);
  }
  const std::uint64_t old = newest - 131000;
  expectGap(sequence, idOf(old, 1), {idOf(old, 2), idOf(newest, 1), 131000});
}

}  // namespace
