// platform/event/, platform/security/: a queue of events, and the thread that calls the handlers.
#include <condition_variable>
#include <deque>
#include <mutex>
#include <set>
#include <thread>
#include "Host.h"
#include "platform/event/EventMgr.h"
#include "platform/security/SecurityIF.h"

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
  // Waits until the handler has returned, except when the handler itself unsubscribes.
  void UnSubscribe(TEEventHandler* handler, int eventId) override {
    change([&] { subscriptions_.erase({eventId, handler}); });
    wait([&] { return running_ != handler; });
  }
  void raise(int eventId, const NS_DOMAIN::TopoNode_T& node) {
    change([&] { queue_.push_back({eventId, node}); });
  }
  void drain() {
    wait([this] { return queue_.empty(); });
  }

 private:
  template <typename Change>
  void change(const Change& make) {
    const std::lock_guard lock(mutex_);
    make();
    changed_.notify_all();
  }
  template <typename Condition>
  void wait(const Condition& condition) {
    std::unique_lock lock(mutex_);
    if (std::this_thread::get_id() != thread_.get_id()) changed_.wait(lock, condition);
  }
  void deliver() {
    std::unique_lock lock(mutex_);
    while (changed_.wait(lock, [this] { return stopping_ || !queue_.empty(); }), !stopping_) {
      const auto [eventId, node] = queue_.front();
      for (const auto& [subscribedId, handler] : std::set(subscriptions_)) {
        if (subscribedId != eventId || subscriptions_.count({eventId, handler}) == 0) continue;
        running_ = handler;
        lock.unlock();  // no mutex is locked while a handler runs
        handler->HandleEvent(eventId, 0, {{node}});
        lock.lock();
        running_ = nullptr;
        changed_.notify_all();
      }
      queue_.pop_front();
      changed_.notify_all();
    }
  }

  std::mutex mutex_;
  std::condition_variable changed_;
  std::set<std::pair<int, TEEventHandler*>> subscriptions_;
  std::deque<std::pair<int, NS_DOMAIN::TopoNode_T>> queue_;  // the first event is being delivered
  TEEventHandler* running_ = nullptr;
  bool stopping_ = false;
  std::thread thread_{[this] { deliver(); }};
};

struct Security final : NS_SECURITY_SERVICE1::SecurityIF {
  bool isEventAccessAllowed() override { return true; }
  void setAccessIdentity(const std::string&) override {}
  void setAccessLevel(const int&) override {}
} security;

EventManager events;

}  // namespace

TEEventMgr* TEEventMgr::Instance() { return &events; }
void host::raiseEvent(int id, const NS_DOMAIN::TopoNode_T& node) { events.raise(id, node); }
void host::drainEvents() { events.drain(); }
void host::publishSecurity() { NS_BUNDLEMGR1::SetIFBuf("SecurityIF", &security); }
