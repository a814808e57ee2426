// Many threads raise events while other threads subscribe and unsubscribe handlers.

#include <gtest/gtest.h>

#include <array>
#include <atomic>

#include "tests/unit/agent/events/Handlers.h"

namespace {

using namespace events;
using agent::EventManager;

constexpr std::size_t kRaisers = 3;
constexpr std::int32_t kEventsEach = 2000;
constexpr int kVisitors = 3;
constexpr int kVisits = 100;

// Checks that the events of each raiser arrive in order, one at a time. Has no lock, so that
// ThreadSanitizer reports concurrent calls.
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

  // REQUIRES: the handler is not subscribed.
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

// Destroys the handler after each visit: a later call would be a use after free.
void visit(EventManager& manager) {
  for (int i = 0; i < kVisits; ++i) {
    Checker checker;
    subscribe(manager, checker, {kCreated, kDeleted, kChanged});
    std::this_thread::yield();
    unsubscribe(manager, checker, {kCreated, kDeleted, kChanged});
    EXPECT_TRUE(checker.inOrder());
  }
}

TEST(EventLoad, DeliversInOrderWhileOtherHandlersSubscribeAndUnsubscribe) {
  Checker resident;
  EventManager manager;
  subscribe(manager, resident, {kCreated, kDeleted, kChanged});
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
  unsubscribe(manager, resident, {kCreated, kDeleted, kChanged});
  EXPECT_TRUE(resident.inOrder());
  EXPECT_EQ(kRaisers * kEventsEach, resident.count());
}

// Several threads subscribe and unsubscribe one handler at the same time.
TEST(EventLoad, CallsAHandlerOneEventAtATimeUnderConcurrentSubscriptions) {
  Checker shared;
  EventManager manager;
  std::vector<std::thread> threads;
  threads.emplace_back([&manager] { raiseAll(manager, 0); });
  for (int i = 0; i < kVisitors; ++i) {
    threads.emplace_back([&manager, &shared] {
      for (int j = 0; j < kVisits; ++j) {
        subscribe(manager, shared, {kCreated, kDeleted, kChanged});
        unsubscribe(manager, shared, {kCreated, kDeleted, kChanged});
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(0U, manager.status().subscriptions);
  EXPECT_TRUE(shared.inOrder());
}

// The UnSubscribe waits for the end of the lane, which the Subscribe of the other thread prevents.
TEST(EventLoad, UnSubscribeReturnsWhenTheHandlerSubscribesAgain) {
  EventManager manager;
  for (int i = 0; i < 500; ++i) {
    Checker checker;
    subscribe(manager, checker, {kCreated});
    std::atomic<bool> go{false};
    std::thread other([&] {
      while (!go) {
      }
      subscribe(manager, checker, {kDeleted});
    });
    go = true;
    unsubscribe(manager, checker, {kCreated});
    other.join();
    unsubscribe(manager, checker, {kDeleted});
    EXPECT_EQ(0U, manager.status().subscriptions);
  }
}

}  // namespace
