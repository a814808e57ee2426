// Delivery of events while memory is short.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <new>
#include <optional>

#include "tests/fakes/FailingNew.h"
#include "tests/unit/agent/events/Handlers.h"

namespace {

using namespace events;
using agent::EventManager;

// Raises an event with one more successful allocation each time, until raise succeeds.
TEST(EventMemory, ReportsAGapForAnEventWithoutMemory) {
  Recorder handler;
  Recorder other;
  std::atomic<int> gaps{0};
  EventManager manager(EventManager::kDefaultQueueLimit, [&] { ++gaps; });
  subscribe(manager, handler, {kCreated});
  subscribe(manager, other, {kChanged});
  int failures = 0;
  for (bool failed = true; failed;) {
    failed = false;
    auto nodes = node("a node with an id that needs memory");
    try {
      const fakes::FailingNew failing(failures);
      manager.raise(kChange, kCreated, std::move(nodes));
    } catch (const std::bad_alloc&) {
      failed = true;
      ++failures;
    }
    manager.raise(kChange, kChanged, node("of others"));
    EXPECT_TRUE(manager.flush(kLong));
    EXPECT_EQ(failures - (failed ? 1 : 0), gaps);
    manager.raise(kChange, kCreated, node("next"));
    EXPECT_TRUE(manager.flush(kLong));
    ASSERT_EQ(failures, gaps);
  }
  EXPECT_LT(0, failures);
  EXPECT_EQ(static_cast<std::size_t>(failures) + 2, handler.events().size());
}

// Allocations of the thread fail from the call of the handler to the end of the thread.
TEST(EventMemoryDeathTest, UnSubscribeEndsAThreadWithoutMemory) {
  testing::GTEST_FLAG(death_test_style) = "threadsafe";
  const auto subscribeAndEnd = [] {
    Recorder handler([](int, const TEEvent&) {
      thread_local std::optional<fakes::FailingNew> failing;
      failing.emplace(0);
    });
    EventManager manager;
    subscribe(manager, handler, {kCreated});
    manager.raise(kChange, kCreated, node("n"));
    manager.flush(kLong);
    unsubscribe(manager, handler, {kCreated});
    std::_Exit(0);
  };
  EXPECT_EXIT(subscribeAndEnd(), testing::ExitedWithCode(0), "");
}

}  // namespace
