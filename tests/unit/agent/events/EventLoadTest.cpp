// Many threads raise events while handlers come and go.

#include <gtest/gtest.h>

#include <array>
#include <atomic>

#include "tests/unit/agent/events/Handlers.h"

namespace {

using agent::EventManager;
using events::kChange;
using events::kChanged;
using events::kCreated;
using events::kDeleted;
using events::kLong;

constexpr std::size_t kRaisers = 3;
constexpr std::int32_t kEventsEach = 2000;
constexpr int kVisitors = 3;
constexpr int kVisits = 100;

// Events of one raiser must arrive in their order, one at a time. Without a lock on purpose:
// checked by ThreadSanitizer.
class Checker final : public TEEventHandler {
 public:
  Checker() { last_.fill(-1); }

  int HandleEvent(int /*eventId*/, int /*source*/, const TEEvent& event) override {
    const NS_DOMAIN::TopoNode_T& node = event.nodes.front();
    std::int32_t& last = last_.at(node.nodeType);
    inOrder_ = inOrder_ && node.attribute3 > last;
    last = node.attribute3;
    ++count_;
    return 0;
  }

  // REQUIRES: it is not subscribed any more.
  bool inOrder() const { return inOrder_; }
  std::size_t count() const { return count_; }

 private:
  std::array<std::int32_t, kRaisers> last_{};
  bool inOrder_ = true;
  std::size_t count_ = 0;
};

void raiseAll(EventManager& manager, std::size_t self) {
  for (std::int32_t i = 0; i < kEventsEach; ++i) {
    std::vector<NS_DOMAIN::TopoNode_T> nodes(1);
    nodes.front().nodeType = static_cast<std::uint32_t>(self);
    nodes.front().attribute3 = i;
    manager.raise(kChange, kCreated + i % 3, std::move(nodes));
  }
}

// The handler is gone after each visit: it must not be called then.
void visit(EventManager& manager) {
  for (int i = 0; i < kVisits; ++i) {
    Checker checker;
    events::subscribe(manager, checker, {kCreated, kDeleted, kChanged});
    std::this_thread::yield();
    events::unsubscribe(manager, checker, {kCreated, kDeleted, kChanged});
    EXPECT_TRUE(checker.inOrder());
  }
}

TEST(EventLoad, ReachesThoseWhoStayInOrderWhileOthersComeAndGo) {
  Checker resident;
  EventManager manager;
  events::subscribe(manager, resident, {kCreated, kDeleted, kChanged});
  std::vector<std::thread> threads;
  for (std::size_t i = 0; i < kRaisers; ++i) {
    threads.emplace_back([&manager, i] { raiseAll(manager, i); });
  }
  for (int i = 0; i < kVisitors; ++i) {
    threads.emplace_back([&manager] { visit(manager); });
  }
  threads.emplace_back([&manager] {
    for (int i = 0; i < kVisits; ++i) {
      manager.flush(std::chrono::milliseconds(1));
      EXPECT_GE(manager.status().subscriptions, 3U);
    }
  });
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_TRUE(manager.flush(kLong));
  EXPECT_EQ(0U, manager.status().queued);
  EXPECT_EQ(0U, manager.status().dropped);
  events::unsubscribe(manager, resident, {kCreated, kDeleted, kChanged});
  EXPECT_TRUE(resident.inOrder());
  EXPECT_EQ(kRaisers * kEventsEach, resident.count());
}

// One handler that several threads subscribe and unsubscribe at once.
TEST(EventLoad, CallsAHandlerOneEventAtATimeWhoeverSubscribesIt) {
  Checker shared;
  EventManager manager;
  std::vector<std::thread> threads;
  threads.emplace_back([&manager] { raiseAll(manager, 0); });
  for (int i = 0; i < kVisitors; ++i) {
    threads.emplace_back([&manager, &shared] {
      for (int j = 0; j < kVisits; ++j) {
        events::subscribe(manager, shared, {kCreated, kDeleted, kChanged});
        events::unsubscribe(manager, shared, {kCreated, kDeleted, kChanged});
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(0U, manager.status().subscriptions);
  EXPECT_TRUE(shared.inOrder());
}

// Whoever waits for the end of a lane must notice that another thread has prevented it.
TEST(EventLoad, NeverLeavesAnUnsubscriberWaitingWhenTheHandlerSubscribesAgain) {
  EventManager manager;
  for (int i = 0; i < 500; ++i) {
    Checker checker;
    events::subscribe(manager, checker, {kCreated});
    std::atomic<bool> go{false};
    std::thread other([&] {
      while (!go) {
      }
      events::subscribe(manager, checker, {kDeleted});
    });
    go = true;
    events::unsubscribe(manager, checker, {kCreated});
    other.join();
    events::unsubscribe(manager, checker, {kDeleted});
    EXPECT_EQ(0U, manager.status().subscriptions);
  }
}

}  // namespace
