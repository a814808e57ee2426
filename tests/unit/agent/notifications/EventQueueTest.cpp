#include "agent/notifications/EventQueue.h"

#include <gtest/gtest.h>

#include <optional>

#include "tests/fakes/FailingNew.h"
#include "tests/unit/agent/notifications/Events.h"

namespace {

using agent::EventQueue;
using agent::Gap;
using agent::Notification;
using notification_tests::Delivered;
using notification_tests::Deliveries;
using notification_tests::event;
using notification_tests::gap;

constexpr std::size_t kNoLimit = 1000;

// Notifications of one byte.
void push(EventQueue& queue, std::uint64_t first, std::uint64_t last) {
  for (std::uint64_t id = first; id <= last; ++id) {
    queue.push({id, nullptr, 1});
  }
}

std::optional<Delivered> next(EventQueue& queue) {
  const auto delivery = queue.take();
  if (!delivery) {
    return std::nullopt;
  }
  if (const auto* const lost = std::get_if<Gap>(&*delivery)) {
    return Delivered{0, *lost};
  }
  return event(std::get<Notification>(*delivery).id);
}

Deliveries drain(EventQueue& queue) {
  Deliveries all;
  while (!queue.empty()) {
    all.push_back(next(queue).value_or(Delivered()));
  }
  return all;
}

TEST(EventQueue, ReturnsNotificationsInOrder) {
  EventQueue queue({3, kNoLimit});
  EXPECT_FALSE(next(queue));
  push(queue, 1, 3);
  EXPECT_EQ(3U, queue.size());
  EXPECT_EQ((Deliveries{event(1), event(2), event(3)}), drain(queue));
  EXPECT_EQ(0U, queue.size());
  EXPECT_EQ(0U, queue.evicted());
}

TEST(EventQueue, ReplacesTheOldestNotificationsByAGap) {
  EventQueue queue({3, kNoLimit});
  push(queue, 1, 10);
  EXPECT_EQ(3U, queue.size());
  EXPECT_EQ(7U, queue.evicted());
  EXPECT_EQ((Deliveries{gap(1, 7, 7), event(8), event(9), event(10)}), drain(queue));
}

TEST(EventQueue, MergesEvictionsUntilTheGapIsTaken) {
  EventQueue queue({2, kNoLimit});
  push(queue, 1, 3);
  push(queue, 4, 4);
  EXPECT_EQ(gap(1, 2, 2), next(queue));
  push(queue, 5, 5);
  EXPECT_EQ((Deliveries{gap(3, 3, 1), event(4), event(5)}), drain(queue));
  EXPECT_EQ(3U, queue.evicted());
}

TEST(EventQueue, SpansUnusedIdsWithAGap) {
  EventQueue queue({1, kNoLimit});
  push(queue, 3, 3);
  push(queue, 9, 9);
  push(queue, 20, 20);
  EXPECT_EQ((Deliveries{gap(3, 9, 2), event(20)}), drain(queue));
}

TEST(EventQueue, HoldsAtLeastOneNotification) {
  EventQueue queue({0, kNoLimit});
  push(queue, 1, 2);
  EXPECT_EQ((Deliveries{gap(1, 1, 1), event(2)}), drain(queue));
}

TEST(EventQueue, MergesAReturnedGapWithLaterEvictions) {
  EventQueue queue({1, kNoLimit});
  push(queue, 1, 2);
  EXPECT_EQ(gap(1, 1, 1), next(queue));
  queue.returnGap({1, 1, 1});
  EXPECT_EQ(gap(1, 1, 1), next(queue));
  push(queue, 3, 4);
  queue.returnGap({1, 1, 1});
  EXPECT_EQ((Deliveries{gap(1, 3, 3), event(4)}), drain(queue));
}

TEST(EventQueue, KeepsReportedGapsInOrder) {
  EventQueue queue({3, kNoLimit});
  push(queue, 1, 2);
  queue.reportGap({3, 3, 1});
  queue.reportGap({3, 3, 1});
  push(queue, 4, 4);
  EXPECT_EQ((Deliveries{event(1), event(2), gap(3, 3, 2), event(4)}), drain(queue));
  queue.reportGap({5, 5, 1});
  EXPECT_FALSE(queue.empty());
  EXPECT_EQ((Deliveries{gap(5, 5, 1)}), drain(queue));
}

TEST(EventQueue, MergesConsecutiveReportedGaps) {
  EventQueue queue({3, kNoLimit});
  push(queue, 1, 2);
  queue.reportGap({3, 3, 1});
  queue.reportGap({4, 6, 3});
  EXPECT_EQ((Deliveries{event(1), event(2), gap(3, 6, 4)}), drain(queue));
}

TEST(EventQueue, MergesReportedGapsWithEvictions) {
  EventQueue queue({2, kNoLimit});
  push(queue, 1, 1);
  queue.reportGap({2, 2, 5});
  push(queue, 3, 4);
  EXPECT_EQ((Deliveries{gap(1, 2, 6), event(3), event(4)}), drain(queue));
  push(queue, 5, 5);
  queue.reportGap({6, 6, 5});
  push(queue, 7, 9);
  EXPECT_EQ((Deliveries{gap(5, 7, 7), event(8), event(9)}), drain(queue));
  EXPECT_EQ(3U, queue.evicted());
}

TEST(EventQueue, HasAnUnknownCountAfterAnUnknownGap) {
  EventQueue queue({1, kNoLimit});
  queue.reportGap({1, 10, 0});
  push(queue, 11, 12);
  EXPECT_EQ((Deliveries{gap(1, 11, 0), event(12)}), drain(queue));
}

TEST(EventQueue, EvictsTheOldestNotificationsUntilTheBytesFit) {
  EventQueue queue({100, 10});
  push(queue, 1, 4);
  queue.push({5, nullptr, 6});
  EXPECT_EQ(10U, queue.bytes());
  EXPECT_EQ(0U, queue.evicted());
  queue.push({6, nullptr, 3});
  EXPECT_EQ(10U, queue.bytes());
  EXPECT_EQ(3U, queue.evicted());
  EXPECT_EQ((Deliveries{gap(1, 3, 3), event(4), event(5), event(6)}), drain(queue));
  EXPECT_EQ(0U, queue.bytes());
}

TEST(EventQueue, ReplacesAnOversizedNotificationByAGap) {
  EventQueue queue({100, 10});
  push(queue, 1, 2);
  queue.push({3, nullptr, 11});
  push(queue, 4, 4);
  EXPECT_EQ(3U, queue.bytes());
  EXPECT_EQ(1U, queue.evicted());
  EXPECT_EQ((Deliveries{event(1), event(2), gap(3, 3, 1), event(4)}), drain(queue));
  queue.push({5, nullptr, 10});
  EXPECT_EQ((Deliveries{event(5)}), drain(queue));
}

TEST(EventQueue, BecomesOneGapWhenMemoryIsShort) {
  EventQueue queue({1000, kNoLimit});
  push(queue, 1, 2);
  queue.reportGap({3, 3, 1});
  std::uint64_t id = 3;
  {
    const fakes::FailingNew failing(0);
    while (fakes::FailingNew::failures() == 0) {
      queue.push({++id, nullptr, 1});
    }
  }
  EXPECT_EQ(0U, queue.size());
  EXPECT_EQ(0U, queue.bytes());
  EXPECT_EQ(id - 1, queue.evicted());
  push(queue, id + 1, id + 1);
  EXPECT_EQ((Deliveries{gap(1, id, id), event(id + 1)}), drain(queue));
}

TEST(EventQueue, KeepsAGapWhenMemoryIsShort) {
  EventQueue queue({1000, kNoLimit});
  push(queue, 1, 1);
  std::uint64_t id = 1;
  {
    const fakes::FailingNew failing(0);
    while (fakes::FailingNew::failures() == 0) {
      queue.push({++id, nullptr, 1});
      queue.reportGap({id, id, 0});
    }
  }
  EXPECT_EQ((Deliveries{gap(1, id, 0)}), drain(queue));
}

TEST(EventQueue, IsEmptyAfterClear) {
  EventQueue queue({2, kNoLimit});
  push(queue, 1, 5);
  queue.clear();
  EXPECT_TRUE(queue.empty());
  EXPECT_EQ(0U, queue.size());
  EXPECT_EQ(0U, queue.bytes());
  push(queue, 6, 7);
  EXPECT_EQ((Deliveries{event(6), event(7)}), drain(queue));
}

}  // namespace
