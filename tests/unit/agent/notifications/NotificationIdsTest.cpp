#include "agent/notifications/NotificationIds.h"

#include <gtest/gtest.h>

#include "tests/unit/agent/notifications/Events.h"

namespace {

using agent::NotificationIds;
using notification_tests::Reservation;

using Ids = std::vector<std::uint64_t>;

Ids take(NotificationIds& ids, int count) {
  Ids taken;
  for (int i = 0; i < count; ++i) {
    taken.push_back(ids.next().value_or(0));
  }
  return taken;
}

TEST(NotificationIds, ComeFromBlocksOfAThousand) {
  Reservation reservation;
  NotificationIds ids(reservation.function());
  EXPECT_EQ(0U, ids.last());
  for (std::uint64_t id = 1; id <= 2500; ++id) {
    ASSERT_EQ(id, ids.next());
    ASSERT_EQ(id, ids.last());
  }
  EXPECT_EQ(Ids(3, 1000), reservation.counts);
}

TEST(NotificationIds, RiseOverRestarts) {
  Reservation reservation;
  std::uint64_t newest = 0;
  for (int run = 0; run < 5; ++run) {
    NotificationIds ids(reservation.function(), 10);
    EXPECT_EQ(reservation.next - 11, ids.last());
    for (int i = 0; i < 3 + 7 * run; ++i) {
      const std::uint64_t id = ids.next().value();
      EXPECT_LT(newest, id);
      newest = id;
    }
  }
}

TEST(NotificationIds, CannotStartWithoutABlock) {
  Reservation reservation;
  reservation.failing = true;
  EXPECT_THROW(NotificationIds(reservation.function()), std::runtime_error);
}

TEST(NotificationIds, ComeFromBlocksOfTwoAtLeast) {
  Reservation reservation;
  NotificationIds ids(reservation.function(), 1);
  EXPECT_EQ((Ids{1, 2, 3}), take(ids, 3));
  EXPECT_EQ(Ids(2, 2), reservation.counts);
}

TEST(NotificationIds, GoOnOverAFailureThatPasses) {
  Reservation reservation;
  NotificationIds ids(reservation.function(), 10);
  take(ids, 5);
  reservation.failing = true;
  EXPECT_EQ((Ids{6, 7, 8, 9}), take(ids, 4));
  reservation.failing = false;
  EXPECT_EQ((Ids{10, 11, 12}), take(ids, 3));
  EXPECT_EQ(12U, ids.countSince(0));
}

TEST(NotificationIds, TellOfEveryFailureOnce) {
  Reservation reservation;
  NotificationIds ids(reservation.function(), 10);
  testing::internal::CaptureStderr();
  take(ids, 5);
  reservation.failing = true;
  take(ids, 3);
  reservation.failing = false;
  take(ids, 7);
  reservation.failing = true;
  take(ids, 3);
  const std::string log = testing::internal::GetCapturedStderr();
  const std::string line = "no ids for notifications can be reserved: disk full";
  const std::size_t first = log.find(line);
  const std::size_t last = log.rfind(line);
  EXPECT_NE(std::string::npos, first);
  EXPECT_NE(first, last);
  EXPECT_EQ(last, log.find(line, first + 1));
}

TEST(NotificationIds, KeepTheLastOneForWhatIsMissed) {
  Reservation reservation;
  NotificationIds ids(reservation.function(), 4);
  reservation.failing = true;
  EXPECT_EQ((Ids{1, 2, 3}), take(ids, 3));
  EXPECT_EQ(3U, ids.last());
  EXPECT_FALSE(ids.next());
  EXPECT_EQ(4U, ids.last());
  EXPECT_FALSE(ids.next());
  EXPECT_EQ(4U, ids.last());
  EXPECT_EQ(0U, ids.countSince(1));
  reservation.failing = false;
  EXPECT_EQ((Ids{5, 6}), take(ids, 2));
  EXPECT_EQ(2U, ids.countSince(4));
  EXPECT_EQ(0U, ids.countSince(3));
}

TEST(NotificationIds, CountWhatThisRunHandedOut) {
  Reservation reservation;
  reservation.next = 101;
  NotificationIds ids(reservation.function(), 10);
  take(ids, 25);
  EXPECT_EQ(125U, ids.last());
  EXPECT_EQ(25U, ids.countSince(100));
  EXPECT_EQ(1U, ids.countSince(124));
  EXPECT_EQ(0U, ids.countSince(125));
  EXPECT_EQ(0U, ids.countSince(99));
}

TEST(NotificationIds, DoNotCountOverAGap) {
  Reservation reservation;
  NotificationIds ids(reservation.function(), 4);
  reservation.next = 101;
  EXPECT_EQ((Ids{1, 2, 3, 4, 101, 102}), take(ids, 6));
  EXPECT_EQ(2U, ids.countSince(100));
  EXPECT_EQ(0U, ids.countSince(4));
}

TEST(NotificationIds, DoNotCountOverOneThatStandsForOthers) {
  Reservation reservation;
  NotificationIds ids(reservation.function(), 4);
  take(ids, 2);
  EXPECT_EQ(3U, ids.standIn());
  EXPECT_EQ(0U, ids.countSince(2));
  EXPECT_EQ((Ids{4, 5}), take(ids, 2));
  EXPECT_EQ(0U, ids.countSince(2));
  EXPECT_EQ(2U, ids.countSince(3));
}

TEST(NotificationIds, StandForOthersWithTheLastOneWhenNoneCanBeReserved) {
  Reservation reservation;
  NotificationIds ids(reservation.function(), 4);
  reservation.failing = true;
  take(ids, 3);
  EXPECT_EQ(4U, ids.standIn());
  EXPECT_EQ(4U, ids.standIn());
  EXPECT_EQ(0U, ids.countSince(3));
}

TEST(NotificationIds, AreNotTakenTwiceFromAReservationThatForgets) {
  Reservation reservation;
  NotificationIds ids(reservation.function(), 4);
  reservation.next = 1;
  EXPECT_EQ((Ids{1, 2, 3, 4, 5}), take(ids, 5));
}

}  // namespace
