// How handlers leave: nobody is inside one that has unsubscribed, and nothing of it is kept.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <future>

#include "tests/support/Task.h"
#include "tests/unit/agent/events/Handlers.h"
#include "tests/unit/agent/events/PlatformSupport.h"

namespace {

using agent::EventManager;
using events::awaitStatus;
using events::Blocked;
using events::Gate;
using events::Handled;
using events::kChange;
using events::kChanged;
using events::kCreated;
using events::kDeleted;
using events::kLong;
using events::kShort;
using events::node;
using events::Recorder;
using events::subscribe;
using events::unsubscribe;
using testing::ElementsAre;

TEST(UnSubscribe, OfARegistrationThatDoesNotExistIsNoError) {
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

TEST(UnSubscribe, IsFollowedByNoCallForThatEvent) {
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

TEST(UnSubscribe, WaitsForTheRunningCallThoughOtherRegistrationsRemain) {
  Blocked blocked;
  EventManager manager;
  subscribe(manager, blocked.handler, {kCreated, kDeleted});
  manager.raise(kChange, kCreated, {});
  blocked.waitUntilInside();
  support::Task leaving([&] { unsubscribe(manager, blocked.handler, {kCreated}); });
  awaitStatus(manager, &EventManager::Status::subscriptions, std::size_t{1});
  EXPECT_TRUE(leaving.waits());
  blocked.letGo();
  leaving.get();
}

// The handler is never idle, so that only the call that runs at that moment can be waited for.
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

TEST(UnSubscribe, DropsTheQueuedEventsOfThatIdentifierOnly) {
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
  blocked.letGo();
  leaving.get();
  EXPECT_TRUE(manager.flush(kLong));
  EXPECT_THAT(blocked.handler.events(),
              ElementsAre(Handled{kCreated, "a"}, Handled{kDeleted, "b"}, Handled{kChanged, "d"}));
  EXPECT_EQ(0U, manager.status().dropped);  // nobody misses them
}

TEST(UnSubscribe, TellsThatEventsWereLostWhenSomeWaited) {
  int told = 0;
  Blocked slow;
  EventManager manager(EventManager::kDefaultQueueLimit, [&] { ++told; });
  subscribe(manager, slow.handler, {kCreated, kDeleted, kChanged});
  manager.raise(kChange, kCreated, node("a"));
  slow.waitUntilInside();
  manager.raise(kChange, kDeleted, node("b"));
  manager.raise(kChange, kDeleted, node("c"));
  std::thread letGo([&] {
    awaitStatus(manager, &EventManager::Status::queued, std::size_t{0});
    slow.letGo();
  });
  unsubscribe(manager, slow.handler, {kDeleted});
  letGo.join();
  EXPECT_EQ(1, told);
  unsubscribe(manager, slow.handler, {kCreated, kChanged});
  EXPECT_EQ(1, told);
  EXPECT_THAT(slow.handler.events(), ElementsAre(Handled{kCreated, "a"}));
}

TEST(UnSubscribe, FromWithinTheHandlersCallDoesNotWait) {
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

TEST(UnSubscribe, OnceMoreWaitsForACallThatHasUnsubscribedItsHandler) {
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

TEST(UnSubscribe, FromWithinAnotherHandlersCallWaits) {
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

// Says when the thread that it belongs to has ended, which it makes take a while.
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

TEST(UnSubscribe, EndsTheThreadWithTheLastRegistration) {
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

TEST(UnSubscribe, LetsAHandlerSubscribeAgain) {
  Recorder handler;
  EventManager manager;
  for (const char* id : {"a", "b"}) {
    subscribe(manager, handler, {kCreated});
    manager.raise(kChange, kCreated, node(id));
    EXPECT_TRUE(manager.flush(kLong));
    unsubscribe(manager, handler, {kCreated});
    manager.raise(kChange, kCreated, node("nobody's"));
  }
  EXPECT_THAT(handler.events(), ElementsAre(Handled{kCreated, "a"}, Handled{kCreated, "b"}));
}

// The call that has unsubscribed its handler is still running when the handler subscribes again.
TEST(UnSubscribe, IsUndoneBySubscribingAgainWithoutASecondCallAtATime) {
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
  manager.raise(kChange, kCreated, node("nobody's"));
  subscribe(manager, handler, {kCreated});
  manager.raise(kChange, kCreated, node("b"));
  EXPECT_FALSE(manager.flush(kShort));
  leave.open();
  EXPECT_TRUE(manager.flush(kLong));
  EXPECT_THAT(handler.events(), ElementsAre(Handled{kCreated, "a"}, Handled{kCreated, "b"}));
  unsubscribe(manager, handler, {kCreated});
}

}  // namespace
