// UnSubscribe: waiting for running calls, queued events, threads, and new subscriptions.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <future>

#include "tests/support/Task.h"
#include "tests/unit/agent/events/Handlers.h"
#include "tests/unit/agent/events/PlatformSupport.h"

namespace {

using namespace events;
using agent::EventManager;
using testing::ElementsAre;

TEST(UnSubscribe, IgnoresAnUnknownSubscription) {
  Recorder handler;
  EventManager manager;
  unsubscribe(manager, handler, {kCreated});
  subscribe(manager, handler, {kDeleted});
  unsubscribe(manager, handler, {kCreated, kChanged});
  EXPECT_EQ(1U, manager.status().subscriptions);
  manager.raise(kChange, kDeleted, node("a"));
  EXPECT_TRUE(manager.flush(kLong));
  EXPECT_THAT(handler.events(), ElementsAre(Handled{kDeleted, "a"}));
}

TEST(UnSubscribe, StopsTheEventsOfTheIdentifier) {
  Recorder handler;
  Recorder other;
  EventManager manager;
  subscribe(manager, handler, {kCreated, kDeleted});
  subscribe(manager, other, {kCreated});
  unsubscribe(manager, handler, {kCreated});
  manager.raise(kChange, kCreated, node("a"));
  manager.raise(kChange, kDeleted, node("b"));
  EXPECT_TRUE(manager.flush(kLong));
  EXPECT_THAT(handler.events(), ElementsAre(Handled{kDeleted, "b"}));
  EXPECT_THAT(other.events(), ElementsAre(Handled{kCreated, "a"}));
}

TEST(UnSubscribe, WaitsForTheRunningCall) {
  Gate inside;
  Gate leave;
  std::atomic<bool> left{false};
  Recorder handler([&](int /*eventId*/, const TEEvent& /*event*/) {
    inside.open();
    leave.pass();
    left = true;
  });
  EventManager manager;
  subscribe(manager, handler, {kCreated});
  manager.raise(kChange, kCreated, {});
  inside.pass();
  support::Task leaving([&] {
    unsubscribe(manager, handler, {kCreated});
    EXPECT_TRUE(left);
  });
  awaitStatus(manager, &EventManager::Status::subscriptions, std::size_t{0});
  EXPECT_TRUE(leaving.waits());
  leave.open();
  leaving.get();
}

TEST(UnSubscribe, WaitsForTheRunningCallWhileOtherSubscriptionsRemain) {
  Blocked blocked;
  EventManager manager;
  subscribe(manager, blocked.handler, {kCreated, kDeleted});
  manager.raise(kChange, kCreated, {});
  blocked.waitUntilInside();
  support::Task leaving([&] { unsubscribe(manager, blocked.handler, {kCreated}); });
  awaitStatus(manager, &EventManager::Status::subscriptions, std::size_t{1});
  EXPECT_TRUE(leaving.waits());
  blocked.release();
  leaving.get();
}

// The handler is never idle: its queue always has an event. UnSubscribe waits for one call only.
TEST(UnSubscribe, DoesNotWaitForLaterCalls) {
  Gate inside;
  EventManager* running = nullptr;
  Recorder endless([&](int /*eventId*/, const TEEvent& /*event*/) {
    running->raise(kChange, kDeleted, {});
    inside.open();
  });
  EventManager manager;
  running = &manager;
  subscribe(manager, endless, {kCreated, kDeleted});
  manager.raise(kChange, kDeleted, {});
  inside.pass();
  unsubscribe(manager, endless, {kCreated});
  EXPECT_EQ(1U, manager.status().subscriptions);
  unsubscribe(manager, endless, {kDeleted});
}

TEST(UnSubscribe, DropsTheQueuedEventsOfTheIdentifierOnly) {
  Blocked blocked;
  EventManager manager;
  subscribe(manager, blocked.handler, {kCreated, kDeleted, kChanged});
  manager.raise(kChange, kCreated, node("a"));
  blocked.waitUntilInside();
  manager.raise(kChange, kDeleted, node("b"));
  manager.raise(kChange, kCreated, node("c"));
  manager.raise(kChange, kChanged, node("d"));
  manager.raise(kChange, kCreated, node("e"));
  support::Task leaving([&] { unsubscribe(manager, blocked.handler, {kCreated}); });
  awaitStatus(manager, &EventManager::Status::queued, std::size_t{2});
  blocked.release();
  leaving.get();
  EXPECT_TRUE(manager.flush(kLong));
  EXPECT_THAT(blocked.handler.events(),
              ElementsAre(Handled{kCreated, "a"}, Handled{kDeleted, "b"}, Handled{kChanged, "d"}));
  EXPECT_EQ(0U, manager.status().dropped);  // withdrawn events do not count
}

TEST(UnSubscribe, ReportsAGapForQueuedEvents) {
  int gaps = 0;
  Blocked slow;
  EventManager manager(EventManager::kDefaultQueueLimit, [&] { ++gaps; });
  subscribe(manager, slow.handler, {kCreated, kDeleted, kChanged});
  manager.raise(kChange, kCreated, node("a"));
  slow.waitUntilInside();
  manager.raise(kChange, kDeleted, node("b"));
  manager.raise(kChange, kDeleted, node("c"));
  unsubscribeDuringCall(manager, slow, {kDeleted});
  EXPECT_EQ(1, gaps);
  unsubscribe(manager, slow.handler, {kCreated, kChanged});
  EXPECT_EQ(1, gaps);
  EXPECT_THAT(slow.handler.events(), ElementsAre(Handled{kCreated, "a"}));
}

TEST(UnSubscribe, BetweenTwoEventsOfAChangeReportsTheOthersAsAGap) {
  std::atomic<int> gaps{0};
  Blocked slow;
  EventManager manager(EventManager::kDefaultQueueLimit, [&] { ++gaps; });
  subscribe(manager, slow.handler, {kCreated});
  manager.raise(kChange, kCreated, events::numberedNodes(3 * EventManager::kMaxNodesPerEvent));
  slow.waitUntilInside();
  support::Task leaving([&] { unsubscribe(manager, slow.handler, {kCreated}); });
  awaitStatus(manager, &EventManager::Status::queued, std::size_t{0});
  EXPECT_EQ(0, gaps);  // the notifications of the running call come first
  slow.release();
  leaving.get();
  EXPECT_EQ(1, gaps);
  EXPECT_THAT(slow.handler.events(), ElementsAre(Handled{kCreated, "0"}));
}

TEST(UnSubscribe, DoesNotWaitWithinACallOfTheHandler) {
  Gate done;
  EventManager* running = nullptr;
  Recorder handler([&](int /*eventId*/, const TEEvent& /*event*/) {
    unsubscribe(*running, handler, {kCreated, kDeleted, kChanged});
    done.open();
  });
  EventManager manager;
  running = &manager;
  subscribe(manager, handler, {kCreated, kDeleted, kChanged});
  manager.raise(kChange, kCreated, node("a"));
  done.pass();
  manager.raise(kChange, kDeleted, node("b"));
  EXPECT_TRUE(manager.flush(kLong));
  EXPECT_THAT(handler.events(), ElementsAre(Handled{kCreated, "a"}));
  EXPECT_EQ(0U, manager.status().subscriptions);
}

TEST(UnSubscribe, ByAnotherThreadWaitsForACallThatUnsubscribed) {
  Gate unsubscribed;
  Gate leave;
  std::atomic<bool> left{false};
  EventManager* running = nullptr;
  Recorder handler([&](int /*eventId*/, const TEEvent& /*event*/) {
    unsubscribe(*running, handler, {kCreated});
    unsubscribed.open();
    leave.pass();
    left = true;
  });
  EventManager manager;
  running = &manager;
  subscribe(manager, handler, {kCreated});
  manager.raise(kChange, kCreated, {});
  unsubscribed.pass();
  support::Task leaving([&] {
    unsubscribe(manager, handler, {kCreated});
    EXPECT_TRUE(left);
  });
  EXPECT_TRUE(leaving.waits());
  leave.open();
  leaving.get();
}

TEST(UnSubscribe, WaitsWithinACallOfAnotherHandler) {
  Gate inside;
  Gate leave;
  std::atomic<bool> left{false};
  Recorder first([&](int /*eventId*/, const TEEvent& /*event*/) {
    inside.open();
    leave.pass();
    left = true;
  });
  EventManager* running = nullptr;
  Recorder second([&](int /*eventId*/, const TEEvent& /*event*/) {
    unsubscribe(*running, first, {kCreated});
    EXPECT_TRUE(left);
  });
  EventManager manager;
  running = &manager;
  subscribe(manager, first, {kCreated});
  subscribe(manager, second, {kDeleted});
  manager.raise(kChange, kCreated, {});
  inside.pass();
  manager.raise(kChange, kDeleted, {});
  awaitStatus(manager, &EventManager::Status::subscriptions, std::size_t{1});
  EXPECT_FALSE(manager.flush(kShort));
  leave.open();
  EXPECT_TRUE(manager.flush(kLong));
  EXPECT_THAT(second.events(), ElementsAre(Handled{kDeleted, "-"}));
}

// A thread-local whose destructor delays the end of its thread and then sets the flag.
struct ThreadEnd {
  std::atomic<bool>* flag = nullptr;
  ~ThreadEnd() {
    if (flag != nullptr) {
      std::promise<void>().get_future().wait_for(kShort);
      *flag = true;
    }
  }
};
thread_local ThreadEnd threadEnd;

TEST(UnSubscribe, EndsTheThreadWithTheLastSubscription) {
  std::atomic<bool> ended{false};
  Recorder handler([&](int /*eventId*/, const TEEvent& /*event*/) { threadEnd.flag = &ended; });
  EventManager manager;
  subscribe(manager, handler, {kCreated, kDeleted});
  manager.raise(kChange, kCreated, {});
  EXPECT_TRUE(manager.flush(kLong));
  unsubscribe(manager, handler, {kCreated});
  EXPECT_FALSE(ended);
  unsubscribe(manager, handler, {kDeleted});
  EXPECT_TRUE(ended);
}

TEST(UnSubscribe, AllowsANewSubscription) {
  Recorder handler;
  EventManager manager;
  for (const char* id : {"a", "b"}) {
    subscribe(manager, handler, {kCreated});
    manager.raise(kChange, kCreated, node(id));
    EXPECT_TRUE(manager.flush(kLong));
    unsubscribe(manager, handler, {kCreated});
    manager.raise(kChange, kCreated, node("unhandled"));
  }
  EXPECT_THAT(handler.events(), ElementsAre(Handled{kCreated, "a"}, Handled{kCreated, "b"}));
}

// The handler subscribes again while its call, which has unsubscribed the handler, still runs.
TEST(UnSubscribe, FollowedBySubscribeNeverRunsTwoCallsAtOnce) {
  Gate unsubscribed;
  Gate leave;
  std::atomic<int> inside{0};
  std::atomic<bool> first{true};
  EventManager* running = nullptr;
  Recorder handler([&](int /*eventId*/, const TEEvent& /*event*/) {
    EXPECT_EQ(1, ++inside);
    if (first.exchange(false)) {
      unsubscribe(*running, handler, {kCreated});
      unsubscribed.open();
      leave.pass();
    }
    --inside;
  });
  EventManager manager;
  running = &manager;
  subscribe(manager, handler, {kCreated});
  manager.raise(kChange, kCreated, node("a"));
  unsubscribed.pass();
  manager.raise(kChange, kCreated, node("unhandled"));
  subscribe(manager, handler, {kCreated});
  manager.raise(kChange, kCreated, node("b"));
  EXPECT_FALSE(manager.flush(kShort));
  leave.open();
  EXPECT_TRUE(manager.flush(kLong));
  EXPECT_THAT(handler.events(), ElementsAre(Handled{kCreated, "a"}, Handled{kCreated, "b"}));
  unsubscribe(manager, handler, {kCreated});
}

}  // namespace
