#include "agent/notifications/EventQueue.h"

#include <algorithm>
#include <new>
#include <utility>

namespace agent {
namespace {

// Of two neighbours, the older first.
LostEvents merged(const LostEvents& older, const LostEvents& newer) {
  const bool known = older.count != 0 && newer.count != 0;
  return {older.first, newer.last, known ? older.count + newer.count : 0};
}

}  // namespace

EventQueue::EventQueue(Limits limits)
    : limits_{std::max<std::size_t>(limits.notifications, 1), limits.bytes} {}

void EventQueue::push(Notification notification) {
  const LostEvents gap{notification.id, notification.id, 1};
  const std::size_t bytes = notification.bytes;
  if (bytes > limits_.bytes) {
    pushLost(gap);
    ++overflowed_;
    return;
  }
  while (notifications_ == limits_.notifications || bytes_ + bytes > limits_.bytes) {
    dropOldest();
  }
  if (append(std::move(notification))) {
    ++notifications_;
    bytes_ += bytes;
  } else {
    addLost(gap);
    ++overflowed_;
  }
}

void EventQueue::pushLost(const LostEvents& lost) {
  if (waiting_.empty()) {
    addLost(lost);
    return;
  }
  if (auto* const last = std::get_if<LostEvents>(&waiting_.back())) {
    *last = merged(*last, lost);
  } else if (!append(lost)) {
    addLost(lost);
  }
}

// False when memory is short: then nothing waits any more, and lost_ covers everything before the
// delivery.
bool EventQueue::append(Delivery delivery) {
  try {
    waiting_.emplace_back(std::move(delivery));
    return true;
  } catch (const std::bad_alloc&) {
    while (notifications_ != 0) {
      dropOldest();
    }
    takeGaps();
    return false;
  }
}

// Merges the gaps before the oldest notification into lost_.
void EventQueue::takeGaps() {
  while (!waiting_.empty() && std::holds_alternative<LostEvents>(waiting_.front())) {
    addLost(std::get<LostEvents>(waiting_.front()));
    waiting_.pop_front();
  }
}

// REQUIRES: there is a notification.
void EventQueue::dropOldest() {
  takeGaps();
  const auto& oldest = std::get<Notification>(waiting_.front());
  addLost({oldest.id, oldest.id, 1});
  removed(oldest);
  waiting_.pop_front();
  ++overflowed_;
}

void EventQueue::removed(const Notification& notification) {
  --notifications_;
  bytes_ -= notification.bytes;
}

// Word of what is newer than all that lost_ tells, and older than what waits.
void EventQueue::addLost(const LostEvents& lost) {
  lost_ = lost_ ? merged(*lost_, lost) : lost;
}

void EventQueue::giveBack(const LostEvents& lost) {
  lost_ = lost_ ? merged(lost, *lost_) : lost;
}

std::optional<Delivery> EventQueue::take() {
  if (lost_) {
    takeGaps();
    return *std::exchange(lost_, std::nullopt);
  }
  if (waiting_.empty()) {
    return std::nullopt;
  }
  Delivery oldest = std::move(waiting_.front());
  waiting_.pop_front();
  if (const auto* const notification = std::get_if<Notification>(&oldest)) {
    removed(*notification);
  }
  return oldest;
}

void EventQueue::clear() {
  lost_.reset();
  waiting_.clear();
  notifications_ = 0;
  bytes_ = 0;
}

}  // namespace agent
