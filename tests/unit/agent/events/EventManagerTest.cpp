// Delivery of events: order, slow and failing handlers, overflow, gaps, flush.

#include "agent/events/EventManager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <memory>
#include <new>
#include <stdexcept>
#include <system_error>

#include "agent/base/Log.h"
#include "platform/framework/ProcessException.h"
#include "tests/support/NoThreads.h"
#include "tests/unit/agent/events/Handlers.h"
#include "tests/unit/agent/events/PlatformSupport.h"

namespace {

using namespace events;
using agent::EventManager;
using testing::ElementsAre;
using testing::Field;
using testing::IsEmpty;
using testing::StartsWith;

class EventManagerTest : public testing::Test {
 protected:
  EventManagerTest() { takeLogLines(); }

  static LogLine error(const std::string& text) { return {agent::kLogErrors, text}; }
};

TEST_F(EventManagerTest, DeliversTheSubscribedEvents) {
  Recorder handler;
  EventManager manager;
  subscribe(manager, handler, {kCreated, kChanged});
  manager.raise(kChange, kCreated, node("a"));
  manager.raise(kChange, kDeleted, node("b"));
  manager.raise(kChange, kChanged, node("c"));
  manager.raise(kChange, kChanged, {});
  EXPECT_TRUE(manager.flush(kLong));
  EXPECT_THAT(handler.events(),
              ElementsAre(Handled{kCreated, "a"}, Handled{kChanged, "c"}, Handled{kChanged, "-"}));
}

TEST_F(EventManagerTest, DeliversEventsInTheOrderOfRaising) {
  Recorder handler;
  EventManager manager;
  subscribe(manager, handler, {kCreated, kDeleted, kChanged});
  std::vector<Handled> expected;
  for (int i = 0; i < 1000; ++i) {
    const int eventId = kCreated + i % 3;
    manager.raise(kChange, eventId, node(std::to_string(i)));
    expected.push_back({eventId, std::to_string(i)});
  }
  EXPECT_TRUE(manager.flush(kLong));
  EXPECT_EQ(expected, handler.events());
}

// The nodes that a handler gets, and the size and the change of each event.
struct Parts {
  std::vector<std::string> nodes;
  std::vector<std::size_t> sizes;
  std::vector<std::uint64_t> changes;

  void add(const TEEvent& event) {
    for (const auto& node : event.nodes) {
      nodes.push_back(node.nodeId);
    }
    sizes.push_back(event.nodes.size());
    changes.push_back(EventManager::changeInProgress());
  }
};

TEST_F(EventManagerTest, SplitsAnEventOfManyNodesIntoEventsOfTheSameChange) {
  constexpr std::size_t kMax = EventManager::kMaxNodesPerEvent;
  std::array<Parts, 2> seen;
  Recorder first([&](int /*eventId*/, const TEEvent& event) { seen[0].add(event); });
  Recorder second([&](int /*eventId*/, const TEEvent& event) { seen[1].add(event); });
  EventManager manager;
  subscribe(manager, first, {kCreated, kDeleted});
  subscribe(manager, second, {kCreated, kDeleted});
  manager.raise(11, kCreated, events::numberedNodes(2 * kMax + 1));
  manager.raise(12, kDeleted, events::numberedNodes(kMax));
  EXPECT_TRUE(manager.flush(kLong));
  EXPECT_EQ(8U, manager.status().delivered);
  std::vector<std::string> expected;
  for (const std::size_t count : {2 * kMax + 1, kMax}) {
    for (const auto& each : events::numberedNodes(count)) {
      expected.push_back(each.nodeId);
    }
  }
  for (const Parts& parts : seen) {
    EXPECT_EQ(expected, parts.nodes);
    EXPECT_THAT(parts.sizes, ElementsAre(kMax, kMax, 1U, kMax));
    EXPECT_THAT(parts.changes, ElementsAre(11U, 11U, 11U, 12U));
  }
}

TEST_F(EventManagerTest, CallsAHandlerOnOneThreadOfTheManager) {
  std::vector<std::thread::id> threads;
  Recorder handler([&](int /*eventId*/, const TEEvent& /*event*/) {
    threads.push_back(std::this_thread::get_id());
  });
  EventManager manager;
  subscribe(manager, handler, {kCreated, kDeleted});
  manager.raise(kChange, kCreated, {});
  manager.raise(kChange, kDeleted, {});
  EXPECT_TRUE(manager.flush(kLong));
  ASSERT_EQ(2U, threads.size());
  EXPECT_EQ(threads[0], threads[1]);
  EXPECT_NE(std::this_thread::get_id(), threads[0]);
}

TEST_F(EventManagerTest, ReportsTheNumberOfTheChangeWhileAHandlerRuns) {
  std::vector<std::uint64_t> changes;
  Recorder failing([&](int /*eventId*/, const TEEvent& /*event*/) {
    changes.push_back(EventManager::changeInProgress());
    throw std::runtime_error("no luck");
  });
  std::atomic<std::uint64_t> atGap{kChange};
  Blocked slow;
  EventManager manager(1, [&] { atGap = EventManager::changeInProgress(); });
  subscribe(manager, failing, {kCreated});
  manager.raise(11, kCreated, {});
  EXPECT_TRUE(manager.flush(kLong));
  manager.raise(12, kCreated, {});
  EXPECT_TRUE(manager.flush(kLong));
  EXPECT_THAT(changes, ElementsAre(11U, 12U));
  EXPECT_EQ(0U, EventManager::changeInProgress());
  subscribe(manager, slow.handler, {kDeleted});
  manager.raise(13, kDeleted, {});
  slow.waitUntilInside();
  manager.raise(14, kDeleted, {});
  manager.raise(15, kDeleted, {});
  slow.release();
  EXPECT_TRUE(manager.flush(kLong));
  EXPECT_EQ(0U, atGap);
}

TEST_F(EventManagerTest, SharesAnEventBetweenAllHandlers) {
  std::array<Gate, 2> reached;
  std::array<const TEEvent*, 2> seen{};
  const auto meet = [&](std::size_t self) {
    return [&, self](int /*eventId*/, const TEEvent& event) {
      seen[self] = &event;
      reached[self].open();
      reached[1 - self].pass();
    };
  };
  Recorder first(meet(0));
  Recorder second(meet(1));
  EventManager manager;
  subscribe(manager, first, {kCreated});
  subscribe(manager, second, {kCreated});
  manager.raise(kChange, kCreated, node("a"));
  EXPECT_TRUE(manager.flush(kLong));
  EXPECT_NE(nullptr, seen[0]);
  EXPECT_EQ(seen[0], seen[1]);
}

TEST_F(EventManagerTest, DiscardsEventsWithoutASubscriber) {
  Recorder late;
  EventManager manager;
  manager.raise(kChange, kCreated, node("a"));
  EXPECT_TRUE(manager.flush(std::chrono::milliseconds::zero()));
  subscribe(manager, late, {kCreated});
  manager.raise(kChange, kDeleted, node("b"));
  EXPECT_TRUE(manager.flush(kLong));
  EXPECT_THAT(late.events(), IsEmpty());
  EXPECT_EQ(0U, manager.status().queued);
  EXPECT_EQ(0U, manager.status().delivered);
  EXPECT_EQ(0U, manager.status().dropped);
}

TEST_F(EventManagerTest, CountsARepeatedSubscriptionOnce) {
  Recorder handler;
  EventManager manager;
  subscribe(manager, handler, {kCreated, kCreated});
  EXPECT_EQ(1U, manager.status().subscriptions);
  manager.raise(kChange, kCreated, node("a"));
  EXPECT_TRUE(manager.flush(kLong));
  EXPECT_THAT(handler.events(), ElementsAre(Handled{kCreated, "a"}));
  unsubscribe(manager, handler, {kCreated});
  EXPECT_EQ(0U, manager.status().subscriptions);
  manager.raise(kChange, kCreated, node("b"));
  EXPECT_THAT(handler.events(), ElementsAre(Handled{kCreated, "a"}));
}

TEST_F(EventManagerTest, DoesNotDelayOtherHandlersForASlowHandler) {
  Blocked slow;
  Recorder quick;
  Gate quickIsDone;
  Recorder last([&](int /*eventId*/, const TEEvent& event) {
    if (event.nodes.front().nodeId == "last") {
      quickIsDone.open();
    }
  });
  EventManager manager;
  subscribe(manager, slow.handler, {kCreated});
  subscribe(manager, quick, {kCreated});
  subscribe(manager, last, {kCreated});
  manager.raise(kChange, kCreated, node("a"));
  slow.waitUntilInside();
  manager.raise(kChange, kCreated, node("last"));
  quickIsDone.pass();
  EXPECT_THAT(slow.handler.events(), ElementsAre(Handled{kCreated, "a"}));
  slow.release();
  EXPECT_TRUE(manager.flush(kLong));
  EXPECT_THAT(slow.handler.events(),
              ElementsAre(Handled{kCreated, "a"}, Handled{kCreated, "last"}));
  EXPECT_THAT(quick.events(), ElementsAre(Handled{kCreated, "a"}, Handled{kCreated, "last"}));
}

TEST_F(EventManagerTest, ContinuesAfterAnExceptionOfAHandler) {
  Recorder failing([](int /*eventId*/, const TEEvent& event) {
    const std::string& kind = event.nodes.front().nodeId;
    if (kind == "standard") {
      throw std::runtime_error("no luck");
    }
    if (kind == "platform") {
      ProcessException failure;
      failure.errorCode = 17;
      failure.detail << "no domain";
      throw failure;
    }
    if (kind == "other") {
      throw 7;
    }
  });
  Recorder other;
  EventManager manager;
  subscribe(manager, failing, {kCreated, kDeleted});
  subscribe(manager, other, {kCreated});
  manager.raise(kChange, kCreated, node("standard"));
  manager.raise(kChange, kDeleted, node("platform"));
  manager.raise(kChange, kCreated, node("other"));
  manager.raise(kChange, kCreated, node("good"));
  EXPECT_TRUE(manager.flush(kLong));
  EXPECT_THAT(failing.events(),
              ElementsAre(Handled{kCreated, "standard"}, Handled{kDeleted, "platform"},
                          Handled{kCreated, "other"}, Handled{kCreated, "good"}));
  EXPECT_THAT(other.events(), ElementsAre(Handled{kCreated, "standard"}, Handled{kCreated, "other"},
                                          Handled{kCreated, "good"}));
  EXPECT_THAT(takeLogLines(),
              ElementsAre(error("a handler of event 372 failed: no luck"),
                          error("a handler of event 373 failed: code 17: no domain"),
                          error("a handler of event 372 failed: unknown exception")));
  EXPECT_EQ(3U, manager.status().failed);
  EXPECT_EQ(4U, manager.status().delivered);
}

TEST_F(EventManagerTest, DestroysTheExceptionOfAHandler) {
  const auto token = std::make_shared<int>(0);
  struct Failure {
    std::shared_ptr<int> token;
  };
  Recorder failing([&](int /*eventId*/, const TEEvent& /*event*/) { throw Failure{token}; });
  EventManager manager;
  subscribe(manager, failing, {kCreated});
  manager.raise(kChange, kCreated, {});
  EXPECT_TRUE(manager.flush(kLong));
  EXPECT_EQ(1U, manager.status().failed);
  EXPECT_EQ(1, token.use_count());
}

TEST_F(EventManagerTest, EvictsTheOldestEventsOfAFullQueue) {
  Blocked slow;
  Recorder quick;
  EventManager manager(3);
  subscribe(manager, slow.handler, {kCreated, kDeleted});
  manager.raise(kChange, kCreated, node("0"));
  slow.waitUntilInside();
  for (const char* id : {"1", "2", "3"}) {
    manager.raise(kChange, kCreated, node(id));
  }
  EXPECT_EQ(0U, manager.status().dropped);
  EXPECT_THAT(takeLogLines(), IsEmpty());
  subscribe(manager, quick, {kDeleted});
  manager.raise(kChange, kDeleted, node("4"));
  manager.raise(kChange, kCreated, node("5"));
  awaitStatus(manager, &EventManager::Status::queued, std::size_t{3});
  EXPECT_EQ(2U, manager.status().dropped);
  slow.release();
  EXPECT_TRUE(manager.flush(kLong));
  EXPECT_THAT(slow.handler.events(), ElementsAre(Handled{kCreated, "0"}, Handled{kCreated, "3"},
                                                 Handled{kDeleted, "4"}, Handled{kCreated, "5"}));
  EXPECT_THAT(quick.events(), ElementsAre(Handled{kDeleted, "4"}));
  EXPECT_EQ(5U, manager.status().delivered);
  EXPECT_EQ(2U, manager.status().dropped);
  EXPECT_EQ(0U, manager.status().queued);
}

TEST_F(EventManagerTest, BoundsTheQueueOfEveryHandler) {
  Blocked first;
  Blocked second;
  EventManager manager(1);
  subscribe(manager, first.handler, {kCreated});
  subscribe(manager, second.handler, {kCreated});
  manager.raise(kChange, kCreated, node("0"));
  first.waitUntilInside();
  second.waitUntilInside();
  for (const char* id : {"1", "2", "3"}) {
    manager.raise(kChange, kCreated, node(id));
  }
  EXPECT_EQ(2U, manager.status().queued);
  EXPECT_EQ(4U, manager.status().dropped);
  EXPECT_EQ(1U, takeLogLines().size());
  first.release();
  second.release();
  EXPECT_TRUE(manager.flush(kLong));
  EXPECT_THAT(first.handler.events(), ElementsAre(Handled{kCreated, "0"}, Handled{kCreated, "3"}));
  EXPECT_THAT(second.handler.events(), ElementsAre(Handled{kCreated, "0"}, Handled{kCreated, "3"}));
}

// One queue overflows, the first or the second in the order of the manager.
TEST_F(EventManagerTest, LogsAnOverflowWhileOtherQueuesHaveRoom) {
  for (const bool firstIsSlow : {true, false}) {
    std::array<Blocked, 2> handlers;
    EventManager manager(2);
    for (Blocked& each : handlers) {
      subscribe(manager, each.handler, {kCreated});
    }
    Blocked& slow = handlers[firstIsSlow ? 0 : 1];
    subscribe(manager, slow.handler, {kDeleted});
    manager.raise(kChange, kCreated, node("0"));
    for (Blocked& each : handlers) {
      each.waitUntilInside();
    }
    manager.raise(kChange, kDeleted, node("1"));
    manager.raise(kChange, kDeleted, node("2"));
    EXPECT_THAT(takeLogLines(), IsEmpty());
    manager.raise(kChange, kCreated, node("3"));
    EXPECT_EQ(1U, takeLogLines().size());
    handlers[0].release();
    handlers[1].release();
    EXPECT_TRUE(manager.flush(kLong));
  }
}

TEST_F(EventManagerTest, ReportsUnhandledEventsThatPrecedeHandledEvents) {
  int gaps = 0;
  Recorder handler;
  EventManager manager(EventManager::kDefaultQueueLimit, [&] { ++gaps; });
  manager.raise(kChange, kCreated, node("unhandled"));
  EXPECT_EQ(0, gaps);
  subscribe(manager, handler, {kChanged});
  EXPECT_EQ(1, gaps);
  manager.raise(kChange, kCreated, node("unhandled"));
  manager.raise(kChange, kChanged, node("handled"));
  subscribe(manager, handler, {kDeleted});
  EXPECT_EQ(2, gaps);
  manager.raise(kChange, kChanged, node("handled"));
  subscribe(manager, handler, {kCreated});
  EXPECT_EQ(2, gaps);
}

TEST_F(EventManagerTest, ReturnsTheStatusDuringAGapReport) {
  Blocked slow;
  std::atomic<int> gaps{0};
  const EventManager* reporting = nullptr;
  EventManager manager(1, [&] {
    reporting->status();
    ++gaps;
  });
  reporting = &manager;
  manager.raise(kChange, kCreated, node("unhandled"));
  subscribe(manager, slow.handler, {kCreated, kDeleted});
  EXPECT_EQ(1, gaps);
  manager.raise(kChange, kCreated, node("0"));
  slow.waitUntilInside();
  manager.raise(kChange, kCreated, node("1"));
  manager.raise(kChange, kCreated, node("2"));
  slow.release();
  EXPECT_TRUE(manager.flush(kLong));
  EXPECT_EQ(2, gaps);
  unsubscribe(manager, slow.handler, {kCreated, kDeleted});
  Blocked leaving;
  subscribe(manager, leaving.handler, {kCreated, kDeleted});
  manager.raise(kChange, kCreated, node("3"));
  leaving.waitUntilInside();
  manager.raise(kChange, kDeleted, node("4"));
  unsubscribeDuringCall(manager, leaving, {kDeleted});
  EXPECT_EQ(3, gaps);
}

TEST_F(EventManagerTest, ReportsOneGapBeforeTheNextEvent) {
  std::vector<std::string> calls;
  Gate inside;
  Gate leave;
  Recorder slow([&](int /*eventId*/, const TEEvent& event) {
    calls.push_back(event.nodes.front().nodeId);
    inside.open();
    leave.pass();
  });
  EventManager manager(1, [&] { calls.emplace_back("gap"); });
  subscribe(manager, slow, {kCreated});
  manager.raise(kChange, kCreated, node("0"));
  inside.pass();
  for (const char* id : {"1", "2", "3"}) {
    manager.raise(kChange, kCreated, node(id));
  }
  leave.open();
  EXPECT_TRUE(manager.flush(kLong));
  manager.raise(kChange, kCreated, node("4"));
  EXPECT_TRUE(manager.flush(kLong));
  EXPECT_THAT(calls, ElementsAre("0", "gap", "3", "4"));
}

TEST_F(EventManagerTest, ReportsUnhandledEventsAtTheNextSubscription) {
  int gaps = 0;
  Recorder handler;
  EventManager manager(EventManager::kDefaultQueueLimit, [&] { ++gaps; });
  subscribe(manager, handler, {kChanged});
  manager.raise(kChange, kChanged, node("handled"));
  EXPECT_TRUE(manager.flush(kLong));
  EXPECT_EQ(0, gaps);
  manager.raise(kChange, kCreated, node("unhandled"));
  EXPECT_EQ(0, gaps);
  subscribe(manager, handler, {kCreated, kDeleted});
  EXPECT_EQ(1, gaps);
  EXPECT_EQ(0U, manager.status().dropped);
  EXPECT_THAT(handler.events(), ElementsAre(Handled{kChanged, "handled"}));
}

TEST_F(EventManagerTest, DeliversEventsAfterAGapReportThatThrows) {
  Recorder handler;
  EventManager manager(1, [] { throw std::bad_alloc(); });
  manager.raise(kChange, kCreated, node("unhandled"));
  subscribe(manager, handler, {kCreated});
  manager.raise(kChange, kCreated, node("handled"));
  EXPECT_TRUE(manager.flush(kLong));
  EXPECT_THAT(handler.events(), ElementsAre(Handled{kCreated, "handled"}));
}

TEST_F(EventManagerTest, LogsEachOverflowOnce) {
  std::array<Gate, 2> inside;
  std::array<Gate, 2> leave;
  std::size_t calls = 0;
  Recorder slow([&](int /*eventId*/, const TEEvent& event) {
    if (event.nodes.front().nodeId == "block") {
      inside[calls].open();
      leave[calls].pass();
      ++calls;
    }
  });
  EventManager manager(2);
  subscribe(manager, slow, {kCreated});
  for (std::size_t i = 0; i < 2; ++i) {
    manager.raise(kChange, kCreated, node("block"));
    inside[i].pass();
    for (const char* id : {"1", "2", "3", "4"}) {
      manager.raise(kChange, kCreated, node(id));
    }
    EXPECT_THAT(takeLogLines(),
                ElementsAre(error("a handler of event 372 is too slow: its queue of 2 events is "
                                  "full, the oldest events are dropped")));
    leave[i].open();
    EXPECT_TRUE(manager.flush(kLong));
  }
  EXPECT_EQ(4U, manager.status().dropped);
}

TEST_F(EventManagerTest, LogsAnOverflowThatBeginsBeforeTheLastEventOfAChange) {
  Blocked slow;
  EventManager manager(1);
  subscribe(manager, slow.handler, {kCreated});
  manager.raise(kChange, kCreated, {});
  slow.waitUntilInside();
  manager.raise(kChange, kCreated, numberedNodes(3 * EventManager::kMaxNodesPerEvent));
  EXPECT_THAT(takeLogLines(),
              ElementsAre(error("a handler of event 372 is too slow: its queue of 1 events is "
                                "full, the oldest events are dropped")));
  EXPECT_EQ(2U, manager.status().dropped);
  slow.release();
}

TEST_F(EventManagerTest, LogsAFailedSubscription) {
  Recorder handler;
  EventManager manager;
  {
    const support::NoThreads none;
    EXPECT_THROW(subscribe(manager, handler, {kCreated}), std::system_error);
  }
  EXPECT_THAT(
      takeLogLines(),
      ElementsAre(Field(&LogLine::text, StartsWith("a handler cannot subscribe to event 372: "))));
  EXPECT_EQ(0U, manager.status().subscriptions);
}

TEST_F(EventManagerTest, FlushReturnsFalseAtTheTimeout) {
  Blocked slow;
  EventManager manager;
  subscribe(manager, slow.handler, {kCreated});
  manager.raise(kChange, kCreated, node("a"));
  slow.waitUntilInside();
  EXPECT_FALSE(manager.flush(std::chrono::milliseconds::zero()));  // an event whose handler runs
  manager.raise(kChange, kCreated, node("b"));
  EXPECT_FALSE(manager.flush(kShort));  // a queued event
  slow.release();
  EXPECT_TRUE(manager.flush(kLong));
  EXPECT_THAT(slow.handler.events(), ElementsAre(Handled{kCreated, "a"}, Handled{kCreated, "b"}));
}

// The handler raises two events in each call, so that its queue is never empty.
TEST_F(EventManagerTest, FlushDoesNotWaitForLaterEvents) {
  EventManager* running = nullptr;
  Recorder endless([&running](int /*eventId*/, const TEEvent& /*event*/) {
    for (int i = 0; i < 2; ++i) {
      running->raise(kChange, kCreated, {});
    }
  });
  EventManager manager;
  running = &manager;
  subscribe(manager, endless, {kCreated});
  manager.raise(kChange, kCreated, {});
  EXPECT_TRUE(manager.flush(kLong));
  EXPECT_FALSE(endless.events().empty());
  unsubscribe(manager, endless, {kCreated});
}

TEST_F(EventManagerTest, CountsSubscriptionsAndEvents) {
  Blocked slow;
  Recorder quick;
  EventManager manager;
  EXPECT_EQ(0U, manager.status().subscriptions);
  subscribe(manager, slow.handler, {kCreated, kDeleted});
  subscribe(manager, quick, {kCreated});
  EXPECT_EQ(3U, manager.status().subscriptions);
  manager.raise(kChange, kCreated, {});
  slow.waitUntilInside();
  manager.raise(kChange, kCreated, {});
  manager.raise(kChange, kDeleted, {});
  awaitStatus(manager, &EventManager::Status::delivered, std::uint64_t{2});
  EXPECT_EQ(2U, manager.status().queued);
  slow.release();
  EXPECT_TRUE(manager.flush(kLong));
  EXPECT_EQ(5U, manager.status().delivered);
  EXPECT_EQ(0U, manager.status().queued);
  EXPECT_EQ(0U, manager.status().failed);
  EXPECT_EQ(0U, manager.status().dropped);
}

TEST_F(EventManagerTest, DestructorWaitsForRunningCallsAndDropsQueuedEvents) {
  Gate inside;
  std::atomic<bool> left{false};
  auto manager = std::make_unique<EventManager>();
  Recorder handler([&, running = manager.get()](int /*eventId*/, const TEEvent& /*event*/) {
    inside.open();
    awaitStatus(*running, &EventManager::Status::subscriptions,
                std::size_t{0});  // the destructor has begun
    unsubscribe(*running, handler, {kCreated});
    left = true;
  });
  subscribe(*manager, handler, {kCreated});
  manager->raise(kChange, kCreated, node("a"));
  inside.pass();
  manager->raise(kChange, kCreated, node("b"));
  manager.reset();
  EXPECT_TRUE(left);
  EXPECT_THAT(handler.events(), ElementsAre(Handled{kCreated, "a"}));
}

}  // namespace
