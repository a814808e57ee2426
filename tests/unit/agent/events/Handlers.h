// Event handlers for tests, and helpers to subscribe and to wait.

#ifndef TESTS_UNIT_AGENT_EVENTS_HANDLERS_H
#define TESTS_UNIT_AGENT_EVENTS_HANDLERS_H

#include <chrono>
#include <condition_variable>
#include <functional>
#include <initializer_list>
#include <mutex>
#include <ostream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "agent/events/EventManager.h"

namespace events {

// The change of events in tests where the number does not matter.
constexpr std::uint64_t kChange = 7;

constexpr int kCreated = 372;
constexpr int kDeleted = 373;
constexpr int kChanged = 374;

// Timeout of a wait that succeeds in a test that passes.
constexpr std::chrono::milliseconds kLong{60000};

// Timeout of a wait that fails in a test that passes.
constexpr std::chrono::milliseconds kShort{30};

// One node with this id.
inline std::vector<NS_DOMAIN::TopoNode_T> node(const std::string& id) {
  std::vector<NS_DOMAIN::TopoNode_T> nodes(1);
  nodes.front().nodeId = id;
  return nodes;
}

// Nodes with the ids 0, 1, 2 and so on.
inline std::vector<NS_DOMAIN::TopoNode_T> numberedNodes(std::size_t count) {
  std::vector<NS_DOMAIN::TopoNode_T> nodes(count);
  for (std::size_t i = 0; i < count; ++i) {
    nodes[i].nodeId = std::to_string(i);
  }
  return nodes;
}

inline void subscribe(TEEventMgr& manager, TEEventHandler& handler,
                      std::initializer_list<int> eventIds) {
  for (const int eventId : eventIds) {
    manager.Subscribe(&handler, eventId, 21, 0);
  }
}

inline void unsubscribe(TEEventMgr& manager, TEEventHandler& handler,
                        std::initializer_list<int> eventIds) {
  for (const int eventId : eventIds) {
    manager.UnSubscribe(&handler, eventId);
  }
}

// Closed until open() is called; open from then on.
class Gate {
 public:
  void open() {
    const std::lock_guard<std::mutex> lock(mutex_);
    open_ = true;
    opened_.notify_all();
  }

  void pass() {
    std::unique_lock<std::mutex> lock(mutex_);
    opened_.wait(lock, [this] { return open_; });
  }

 private:
  std::mutex mutex_;
  std::condition_variable opened_;
  bool open_ = false;
};

// An event of a handler's call. node: the id of the first node, "-" without nodes.
struct Handled {
  int eventId;
  std::string node;
};
inline bool operator==(const Handled& left, const Handled& right) {
  return left.eventId == right.eventId && left.node == right.node;
}
inline void PrintTo(const Handled& handled, std::ostream* out) {
  *out << handled.eventId << ' ' << handled.node;
}

// Records each event, then runs the action.
class Recorder final : public TEEventHandler {
 public:
  using Action = std::function<void(int eventId, const TEEvent& event)>;

  explicit Recorder(Action action = nullptr) : action_(std::move(action)) {}

  int HandleEvent(int eventId, int /*source*/, const TEEvent& event) override {
    {
      const std::lock_guard<std::mutex> lock(mutex_);
      const std::string name = event.nodes.empty() ? "-" : event.nodes.front().nodeId;
      events_.push_back({eventId, name});
    }
    if (action_) {
      action_(eventId, event);
    }
    return 0;
  }

  std::vector<Handled> events() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return events_;
  }

 private:
  const Action action_;
  mutable std::mutex mutex_;
  std::vector<Handled> events_;  // guarded by mutex_
};

// A handler whose first call returns after release().
class Blocked {
 public:
  Recorder handler{[this](int /*eventId*/, const TEEvent& /*event*/) {
    inside_.open();
    leave_.pass();
  }};

  // Releases the call, so that a failed test does not hang.
  ~Blocked() { release(); }

  void waitUntilInside() { inside_.pass(); }
  void release() { leave_.open(); }

 private:
  Gate inside_;
  Gate leave_;
};

// Waits until a number of the manager's status has the expected value. Only the timeout of the test
// limits the wait.
template <typename Number>
void awaitStatus(const agent::EventManager& manager, Number agent::EventManager::Status::*member,
                 Number expected) {
  while (manager.status().*member != expected) {
    std::this_thread::yield();
  }
}

// Unsubscribes a handler that is inside a call, and releases the call when the queue is empty.
// REQUIRES: all queued events have these identifiers.
inline void unsubscribeDuringCall(agent::EventManager& manager, Blocked& blocked,
                                  std::initializer_list<int> eventIds) {
  std::thread releasing([&] {
    awaitStatus(manager, &agent::EventManager::Status::queued, std::size_t{0});
    blocked.release();
  });
  unsubscribe(manager, blocked.handler, eventIds);
  releasing.join();
}

}  // namespace events

#endif
