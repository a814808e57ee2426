// Events for which there is no memory.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <new>
#include <optional>

#include "tests/fakes/FailingNew.h"
#include "tests/unit/agent/events/Handlers.h"

namespace {

using agent::EventManager;
using events::kChange;
using events::kChanged;
using events::kCreated;
using events::kLong;
using events::node;
using events::Recorder;
using events::subscribe;
using events::unsubscribe;

// Raises with one allocation more at each time, until it works.
TEST(EventMemory, EventsWithoutMemoryAreToldAsLostBeforeTheNext) {
  Recorder handler;
  Recorder other;
  std::atomic<int> told{0};
  EventManager manager(EventManager::kDefaultQueueLimit, [&] { ++told; });
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
    EXPECT_EQ(failures - (failed ? 1 : 0), told);
    manager.raise(kChange, kCreated, node("next"));
    EXPECT_TRUE(manager.flush(kLong));
    ASSERT_EQ(failures, told);
  }
  EXPECT_LT(0, failures);
  EXPECT_EQ(static_cast<std::size_t>(failures) + 2, handler.events().size());
}

// Allocations of the thread fail from the call of the handler to the end of the thread.
TEST(EventMemoryDeathTest, AThreadWithoutMemoryEndsWithItsHandlersSubscription) {
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
