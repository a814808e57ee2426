#include "agent/notifications/EventQueue.h"

#include <gtest/gtest.h>

#include "tests/fakes/FailingNew.h"
#include "tests/unit/agent/notifications/Events.h"

namespace {

using agent::EventQueue;
using agent::Gap;
using agent::Notification;
using notification_tests::Texts;

constexpr std::size_t kNoLimit = 1000;

// Notifications of one byte.
void push(EventQueue& queue, std::uint64_t first, std::uint64_t last) {
  for (std::uint64_t id = first; id <= last; ++id) {
    queue.push({id, nullptr, 1});
  }
}

std::string next(EventQueue& queue) {
  const auto delivery = queue.take();
  if (!delivery) {
    return "empty";
  }
  if (const auto* const lost = std::get_if<Gap>(&*delivery)) {
    return "lost " + std::to_string(lost->first) + "-" + std::to_string(lost->last) + " " +
           std::to_string(lost->count);
  }
  return std::to_string(std::get<Notification>(*delivery).id);
}

Texts drain(EventQueue& queue) {
  Texts all;
  while (!queue.empty()) {
    all.push_back(next(queue));
  }
  return all;
}

TEST(EventQueue, ReturnsNotificationsInOrder) {
  EventQueue queue({3, kNoLimit});
  EXPECT_EQ("empty", next(queue));
  push(queue, 1, 3);
  EXPECT_EQ(3U, queue.size());
  EXPECT_EQ((Texts{"1", "2", "3"}), drain(queue));
  EXPECT_EQ(0U, queue.size());
  EXPECT_EQ(0U, queue.evicted());
}

TEST(EventQueue, ReplacesTheOldestNotificationsByAGap) {
  EventQueue queue({3, kNoLimit});
  push(queue, 1, 10);
  EXPECT_EQ(3U, queue.size());
  EXPECT_EQ(7U, queue.evicted());
  EXPECT_EQ((Texts{"lost 1-7 7", "8", "9", "10"}), drain(queue));
}

TEST(EventQueue, MergesEvictionsUntilTheGapIsTaken) {
  EventQueue queue({2, kNoLimit});
  push(queue, 1, 3);
  push(queue, 4, 4);
  EXPECT_EQ("lost 1-2 2", next(queue));
  push(queue, 5, 5);
  EXPECT_EQ((Texts{"lost 3-3 1", "4", "5"}), drain(queue));
  EXPECT_EQ(3U, queue.evicted());
}

TEST(EventQueue, SpansUnusedIdsWithAGap) {
  EventQueue queue({1, kNoLimit});
  push(queue, 3, 3);
  push(queue, 9, 9);
  push(queue, 20, 20);
  EXPECT_EQ((Texts{"lost 3-9 2", "20"}), drain(queue));
}

TEST(EventQueue, HoldsAtLeastOneNotification) {
  EventQueue queue({0, kNoLimit});
  push(queue, 1, 2);
  EXPECT_EQ((Texts{"lost 1-1 1", "2"}), drain(queue));
}

TEST(EventQueue, MergesAReturnedGapWithLaterEvictions) {
  EventQueue queue({1, kNoLimit});
  push(queue, 1, 2);
  EXPECT_EQ("lost 1-1 1", next(queue));
  queue.returnGap({1, 1, 1});
  EXPECT_EQ("lost 1-1 1", next(queue));
  push(queue, 3, 4);
  queue.returnGap({1, 1, 1});
  EXPECT_EQ((Texts{"lost 1-3 3", "4"}), drain(queue));
}

TEST(EventQueue, KeepsReportedGapsInOrder) {
  EventQueue queue({3, kNoLimit});
  push(queue, 1, 2);
  queue.reportGap({3, 3, 1});
  queue.reportGap({3, 3, 1});
  push(queue, 4, 4);
  EXPECT_EQ((Texts{"1", "2", "lost 3-3 2", "4"}), drain(queue));
  queue.reportGap({5, 5, 1});
  EXPECT_FALSE(queue.empty());
  EXPECT_EQ((Texts{"lost 5-5 1"}), drain(queue));
}

TEST(EventQueue, MergesConsecutiveReportedGaps) {
  EventQueue queue({3, kNoLimit});
  push(queue, 1, 2);
  queue.reportGap({3, 3, 1});
  queue.reportGap({4, 6, 3});
  EXPECT_EQ((Texts{"1", "2", "lost 3-6 4"}), drain(queue));
}

TEST(EventQueue, MergesReportedGapsWithEvictions) {
  EventQueue queue({2, kNoLimit});
  push(queue, 1, 1);
  queue.reportGap({2, 2, 5});
  push(queue, 3, 4);
  EXPECT_EQ((Texts{"lost 1-2 6", "3", "4"}), drain(queue));
  push(queue, 5, 5);
  queue.reportGap({6, 6, 5});
  push(queue, 7, 9);
  EXPECT_EQ((Texts{"lost 5-7 7", "8", "9"}), drain(queue));
  EXPECT_EQ(3U, queue.evicted());
}

TEST(EventQueue, HasAnUnknownCountAfterAnUnknownGap) {
  EventQueue queue({1, kNoLimit});
  queue.reportGap({1, 10, 0});
  push(queue, 11, 12);
  EXPECT_EQ((Texts{"lost 1-11 0", "12"}), drain(queue));
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
  EXPECT_EQ((Texts{"lost 1-3 3", "4", "5", "6"}), drain(queue));
  EXPECT_EQ(0U, queue.bytes());
}

TEST(EventQueue, ReplacesAnOversizedNotificationByAGap) {
  EventQueue queue({100, 10});
  push(queue, 1, 2);
  queue.push({3, nullptr, 11});
  push(queue, 4, 4);
  EXPECT_EQ(3U, queue.bytes());
  EXPECT_EQ(1U, queue.evicted());
  EXPECT_EQ((Texts{"1", "2", "lost 3-3 1", "4"}), drain(queue));
  queue.push({5, nullptr, 10});
  EXPECT_EQ((Texts{"5"}), drain(queue));
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
  const std::string count = std::to_string(id);
  EXPECT_EQ((Texts{"lost 1-" + count + " " + count, std::to_string(id + 1)}), drain(queue));
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
  EXPECT_EQ((Texts{"lost 1-" + std::to_string(id) + " 0"}), drain(queue));
}

TEST(EventQueue, IsEmptyAfterClear) {
  EventQueue queue({2, kNoLimit});
  push(queue, 1, 5);
  queue.clear();
  EXPECT_TRUE(queue.empty());
  EXPECT_EQ(0U, queue.size());
  EXPECT_EQ(0U, queue.bytes());
  push(queue, 6, 7);
  EXPECT_EQ((Texts{"6", "7"}), drain(queue));
}

}  // namespace
