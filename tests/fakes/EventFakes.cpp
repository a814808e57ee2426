// The event manager and the security interface.

#include <algorithm>
#include <atomic>
#include <mutex>
#include <utility>

#include "tests/fakes/Events.h"
#include "tests/fakes/Journal.h"
#include "tests/fakes/Security.h"

TEEventHandler::~TEEventHandler() = default;
TEEventMgr::~TEEventMgr() = default;

namespace NS_SECURITY_SERVICE1 {

SecurityIF::~SecurityIF() = default;

}  // namespace NS_SECURITY_SERVICE1

namespace fakes {
namespace {

using Subscription = std::pair<TEEventHandler*, int>;

std::mutex mutex;
std::vector<Subscription>& subscriptions = *new std::vector<Subscription>;  // guarded by mutex
std::atomic<bool> eventAccessAllowed{true};
std::atomic<bool> isMissing{false};

class FakeEventMgr final : public TEEventMgr {
 public:
  void Subscribe(TEEventHandler* handler, int eventId, int third, int fourth) override {
    fakes::called("Subscribe", std::to_string(eventId) + ", " + std::to_string(third) + ", " +
                                   std::to_string(fourth));
    const std::lock_guard<std::mutex> lock(mutex);
    subscriptions.emplace_back(handler, eventId);
  }

  void UnSubscribe(TEEventHandler* handler, int eventId) override {
    fakes::called("UnSubscribe", std::to_string(eventId));
    const std::lock_guard<std::mutex> lock(mutex);
    subscriptions.erase(
        std::remove(subscriptions.begin(), subscriptions.end(), Subscription(handler, eventId)),
        subscriptions.end());
  }
};

class FakeSecurity final : public NS_SECURITY_SERVICE1::SecurityIF {
 public:
  bool isEventAccessAllowed() override {
    fakes::called("isEventAccessAllowed", "");
    return eventAccessAllowed;
  }

  void setAccessIdentity(const std::string& identity) override {
    fakes::called("setAccessIdentity", quoted(identity));
  }

  void setAccessLevel(const int& level) override {
    fakes::called("setAccessLevel", std::to_string(level));
  }
};

}  // namespace

std::vector<TEEventHandler*> subscribedTo(int eventId) {
  const std::lock_guard<std::mutex> lock(mutex);
  std::vector<TEEventHandler*> handlers;
  for (const Subscription& subscription : subscriptions) {
    if (subscription.second == eventId) {
      handlers.push_back(subscription.first);
    }
  }
  return handlers;
}

void deliver(int eventId, const TEEvent& event) {
  for (TEEventHandler* handler : subscribedTo(eventId)) {
    handler->HandleEvent(eventId, 0, event);
  }
}

void allowEventAccess(bool allowed) {
  eventAccessAllowed = allowed;
}

NS_SECURITY_SERVICE1::SecurityIF& security() {
  static FakeSecurity interface;
  return interface;
}

void takeEventMgrAway() {
  isMissing = true;
}

void resetEvents() {
  const std::lock_guard<std::mutex> lock(mutex);
  subscriptions.clear();
  eventAccessAllowed = true;
  isMissing = false;
}

}  // namespace fakes

TEEventMgr* TEEventMgr::Instance() {
  static fakes::FakeEventMgr manager;
  fakes::calledSilently("TEEventMgr::Instance");
  return fakes::isMissing ? nullptr : &manager;
}
