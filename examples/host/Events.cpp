// platform/event/: a queue of events, and the thread that delivers them.

#include <condition_variable>
#include <deque>
#include <set>
#include <utility>

#include "Host.h"
#include "platform/event/EventMgr.h"

TEEventHandler::~TEEventHandler() = default;
TEEventMgr::~TEEventMgr() = default;

namespace {

class EventManager final : public TEEventMgr {
 public:
  ~EventManager() override {
    change([this] { stopping_ = true; });
    thread_.join();
  }

  void Subscribe(TEEventHandler* handler, int eventId, int, int) override {
    change([&] { subscriptions_.emplace(eventId, handler); });
  }

  // Waits for a running call, unless the handler itself unsubscribes.
  void UnSubscribe(TEEventHandler* handler, int eventId) override {
    std::unique_lock<std::mutex> lock(mutex_);
    subscriptions_.erase({eventId, handler});
    waitUntil(lock, [&] { return running_ != handler; });
  }

  void raise(int eventId, TEEvent event) {
    change([&] { queue_.emplace_back(eventId, std::move(event)); });
  }

  void drain() {
    std::unique_lock<std::mutex> lock(mutex_);
    waitUntil(lock, [this] { return queue_.empty() && running_ == nullptr; });
  }

  void forgetHandlers() {
    std::unique_lock<std::mutex> lock(mutex_);
    subscriptions_.clear();
    waitUntil(lock, [this] { return running_ == nullptr; });
  }

 private:
  template <typename Change>
  void change(const Change& make) {
    const std::lock_guard<std::mutex> lock(mutex_);
    make();
    changed_.notify_all();
  }

  template <typename Condition>
  void waitUntil(std::unique_lock<std::mutex>& lock, const Condition& condition) {
    if (std::this_thread::get_id() != thread_.get_id()) {
      changed_.wait(lock, condition);
    }
  }

  void deliver() {
    std::unique_lock<std::mutex> lock(mutex_);
    for (;;) {
      changed_.wait(lock, [this] { return stopping_ || !queue_.empty(); });
      if (stopping_) {
        return;
      }
      const auto [eventId, event] = std::move(queue_.front());
      for (const auto& [subscribedId, handler] : std::set<Subscription>(subscriptions_)) {
        if (subscribedId == eventId && subscriptions_.count({eventId, handler}) != 0) {
          running_ = handler;
          lock.unlock();
          handler->HandleEvent(eventId, 0, event);
          lock.lock();
          running_ = nullptr;
        }
      }
      queue_.pop_front();
      changed_.notify_all();
    }
  }

  using Subscription = std::pair<int, TEEventHandler*>;

  std::mutex mutex_;  // not locked during a call of a handler
  std::condition_variable changed_;
  std::set<Subscription> subscriptions_;
  std::deque<std::pair<int, TEEvent>> queue_;
  TEEventHandler* running_ = nullptr;
  bool stopping_ = false;
  std::thread thread_{[this] { deliver(); }};
};

EventManager& events() {
  static EventManager instance;
  return instance;
}

}  // namespace

TEEventMgr* TEEventMgr::Instance() {
  return &events();
}

void host::raiseEvent(int eventId, const NS_DOMAIN::TopoNode_T& node) {
  events().raise(eventId, TEEvent{{node}});
}

void host::drainEvents() {
  events().drain();
}

void host::forgetEventHandlers() {
  events().forgetHandlers();
}
