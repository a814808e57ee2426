#include "client/watch/Inbox.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <future>

#include "tests/support/Task.h"

namespace topoctl {
namespace {

using std::chrono::hours;
using std::chrono::milliseconds;
using testing::ElementsAre;
using State = Inbox::State;

Event eventOf(const std::string& id) {
  Event event;
  event.kind = EventKind::kDeletion;
  event.notificationId = id;
  return event;
}

Event lostUpTo(const std::string& last) {
  Event event;
  event.kind = EventKind::kLost;
  event.lastLostId = last;
  return event;
}

// The ids of all queued events.
std::vector<std::string> idsIn(Inbox& inbox) {
  std::deque<Event> events;
  inbox.takeAll(events, 1000);
  std::vector<std::string> ids;
  for (const Event& event : events) {
    ids.push_back(event.notificationId.value_or("none"));
  }
  return ids;
}

TEST(Inbox, DeliversEventsInOrder) {
  Inbox inbox(10);
  const auto subscription = inbox.startSubscription();
  for (const char* const id : {"7", "8", "10"}) {
    EXPECT_TRUE(inbox.push(subscription, eventOf(id)));
  }
  const Inbox::TakeResult taken = inbox.take(milliseconds(0));
  EXPECT_EQ(taken.state, State::kEvent);
  EXPECT_EQ(taken.event.notificationId, "7");
  EXPECT_THAT(idsIn(inbox), ElementsAre("8", "10"));
  EXPECT_EQ(inbox.take(milliseconds(0)).state, State::kTimeout);
}

TEST(Inbox, DropsARepeatedEvent) {
  Inbox inbox(10);
  const auto subscription = inbox.startSubscription();
  for (const char* const id : {"9", "9", "8", "10", "9", "10", "x", "x"}) {
    EXPECT_TRUE(inbox.push(subscription, eventOf(id)));
  }
  EXPECT_THAT(idsIn(inbox), ElementsAre("9", "10", "x", "x"));
}

// An agent with a new store starts again with low ids.
TEST(Inbox, AcceptsLowerIdsFromANewSubscription) {
  Inbox inbox(10);
  inbox.push(inbox.startSubscription(), eventOf("9"));
  inbox.push(inbox.startSubscription(), eventOf("1"));
  EXPECT_THAT(idsIn(inbox), ElementsAre("9", "1"));
  EXPECT_EQ(inbox.lastId(), "1");
}

TEST(Inbox, RemembersTheLastId) {
  Inbox inbox(10);
  const auto subscription = inbox.startSubscription();
  EXPECT_EQ(inbox.lastId(), "");
  inbox.push(subscription, eventOf("5"));
  inbox.push(subscription, eventOf("4"));
  inbox.push(subscription, eventOf("x"));
  EXPECT_EQ(inbox.lastId(), "5");
  inbox.push(subscription, lostUpTo("9"));
  EXPECT_EQ(inbox.lastId(), "9");
  inbox.push(subscription, lostUpTo("x"));
  EXPECT_EQ(inbox.lastId(), "9");
  inbox.startSubscription();
  EXPECT_EQ(inbox.lastId(), "9");
}

TEST(Inbox, RejectsEventsOfAnEarlierSubscription) {
  Inbox inbox(10);
  const auto earlier = inbox.startSubscription();
  EXPECT_TRUE(inbox.push(earlier, eventOf("1")));
  inbox.startSubscription();
  EXPECT_FALSE(inbox.push(earlier, eventOf("2")));
  inbox.endSubscription(earlier);
  EXPECT_THAT(idsIn(inbox), ElementsAre("1"));
  EXPECT_EQ(inbox.take(milliseconds(0)).state, State::kTimeout);
}

TEST(Inbox, ReportsTheEndAfterTheQueuedEvents) {
  Inbox inbox(10);
  const auto subscription = inbox.startSubscription();
  inbox.push(subscription, eventOf("1"));
  inbox.endSubscription(subscription);
  EXPECT_EQ(inbox.take(hours(1)).state, State::kEvent);
  EXPECT_EQ(inbox.take(hours(1)).state, State::kEnded);
  inbox.startSubscription();
  EXPECT_EQ(inbox.take(milliseconds(0)).state, State::kTimeout);
}

TEST(Inbox, BlocksTheSenderWhileFull) {
  Inbox inbox(1);
  const auto subscription = inbox.startSubscription();
  inbox.push(subscription, eventOf("1"));
  support::Task waiting([&] { return inbox.push(subscription, eventOf("2")); });
  EXPECT_TRUE(waiting.waits());
  EXPECT_EQ(inbox.take(hours(1)).event.notificationId, "1");
  EXPECT_TRUE(waiting.get());
  EXPECT_EQ(inbox.take(hours(1)).event.notificationId, "2");
}

TEST(Inbox, WakesABlockedSenderWhenASubscriptionStarts) {
  Inbox inbox(1);
  const auto first = inbox.startSubscription();
  inbox.push(first, eventOf("1"));
  auto refused = std::async(std::launch::async, [&] { return inbox.push(first, eventOf("2")); });
  const auto second = inbox.startSubscription();
  EXPECT_FALSE(refused.get());
  auto stopped = std::async(std::launch::async, [&] { return inbox.push(second, eventOf("2")); });
  inbox.stop();
  EXPECT_FALSE(stopped.get());
}

TEST(Inbox, StopWakesEveryWaitingThread) {
  Inbox inbox(1);
  auto taking = std::async(std::launch::async, [&] { return inbox.take(hours(1)).state; });
  auto pausing = std::async(std::launch::async, [&] { inbox.waitForStop(hours(1)); });
  inbox.stop();
  EXPECT_EQ(taking.get(), State::kStopped);
  pausing.get();
  EXPECT_TRUE(inbox.isStopped());
  EXPECT_FALSE(inbox.push(inbox.startSubscription(), eventOf("1")));
}

TEST(Inbox, TakesAtMostTheLimit) {
  Inbox inbox(10);
  const auto subscription = inbox.startSubscription();
  for (const char* const id : {"1", "2", "3"}) {
    inbox.push(subscription, eventOf(id));
  }
  std::deque<Event> events(1);
  inbox.takeAll(events, 2);
  EXPECT_EQ(events.size(), 2U);
  inbox.takeAll(events, 1);
  EXPECT_EQ(events.size(), 2U);
  EXPECT_THAT(idsIn(inbox), ElementsAre("2", "3"));
}

}  // namespace
}  // namespace topoctl
