#include "client/watch/Inbox.h"

#include <utility>

namespace topoctl {

bool Inbox::push(SubscriptionId subscription, Event event) {
  MutexLock lock(mutex_);
  changed_.wait(lock.native(), [this, subscription]() REQUIRES(mutex_) {
    return !isCurrent(subscription) || events_.size() < capacity_;
  });
  if (!isCurrent(subscription)) {
    return false;
  }
  const auto id = parseId(event.notificationId);
  if (id && previousId_ && *id <= *previousId_) {
    return true;
  }
  rememberId(event);
  events_.push_back(std::move(event));
  changed_.notify_all();
  return true;
}

void Inbox::rememberId(const Event& event) {
  if (const auto id = parseId(event.notificationId)) {
    previousId_ = id;
    lastId_ = *event.notificationId;
  } else if (event.kind == EventKind::kLost && parseId(event.lastLostId)) {
    lastId_ = *event.lastLostId;
  }
}

void Inbox::endSubscription(SubscriptionId subscription) {
  const MutexLock lock(mutex_);
  if (isCurrent(subscription)) {
    ended_ = true;
    changed_.notify_all();
  }
}

Inbox::SubscriptionId Inbox::startSubscription() {
  const MutexLock lock(mutex_);
  ++subscription_;
  ended_ = false;
  previousId_.reset();
  changed_.notify_all();
  return subscription_;
}

std::string Inbox::lastId() const {
  const MutexLock lock(mutex_);
  return lastId_;
}

Inbox::TakeResult Inbox::take(std::chrono::milliseconds timeout) {
  MutexLock lock(mutex_);
  changed_.wait_for(lock.native(), timeout,
                    [this]() REQUIRES(mutex_) { return stopped_ || ended_ || !events_.empty(); });
  if (stopped_) {
    return {State::kStopped, {}};
  }
  if (events_.empty()) {
    return {ended_ ? State::kEnded : State::kTimeout, {}};
  }
  TakeResult taken = {State::kEvent, std::move(events_.front())};
  events_.pop_front();
  changed_.notify_all();
  return taken;
}

void Inbox::takeAll(std::deque<Event>& events, std::size_t limit) {
  const MutexLock lock(mutex_);
  while (!events_.empty() && events.size() < limit) {
    events.push_back(std::move(events_.front()));
    events_.pop_front();
  }
  changed_.notify_all();
}

void Inbox::waitForStop(std::chrono::milliseconds duration) {
  MutexLock lock(mutex_);
  changed_.wait_for(lock.native(), duration, [this]() REQUIRES(mutex_) { return stopped_; });
}

bool Inbox::isStopped() const {
  const MutexLock lock(mutex_);
  return stopped_;
}

void Inbox::stop() {
  const MutexLock lock(mutex_);
  stopped_ = true;
  changed_.notify_all();
}

}  // namespace topoctl
