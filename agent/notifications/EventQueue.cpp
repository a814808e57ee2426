#include "agent/notifications/EventQueue.h"

#include <algorithm>
#include <utility>

namespace agent {
namespace {

// Of two neighbours, the older first.
LostEvents merged(const LostEvents& older, const LostEvents& newer) {
  const bool known = older.count != 0 && newer.count != 0;
  return {older.first, newer.last, known ? older.count + newer.count : 0};
}

}  // namespace

EventQueue::EventQueue(std::size_t limit) : limit_(std::max<std::size_t>(limit, 1)) {}

void EventQueue::push(Notification notification) {
  if (notifications_ == limit_) {
    dropOldest();
  }
  waiting_.emplace_back(std::move(notification));
  ++notifications_;
}

void EventQueue::pushLost(const LostEvents& lost) {
  if (waiting_.empty()) {
    addLost(lost);
    return;
  }
  if (auto* const last = std::get_if<LostEvents>(&waiting_.back())) {
    *last = merged(*last, lost);
    return;
  }
  waiting_.emplace_back(lost);
}

// With all word of lost ones that stands before it.
void EventQueue::dropOldest() {
  while (const auto* const lost = std::get_if<LostEvents>(&waiting_.front())) {
    addLost(*lost);
    waiting_.pop_front();
  }
  const std::uint64_t id = std::get<Notification>(waiting_.front()).id;
  addLost({id, id, 1});
  waiting_.pop_front();
  --notifications_;
  ++overflowed_;
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
    // Neighbours that came together since are told together.
    while (!waiting_.empty() && std::holds_alternative<LostEvents>(waiting_.front())) {
      addLost(std::get<LostEvents>(waiting_.front()));
      waiting_.pop_front();
    }
    return *std::exchange(lost_, std::nullopt);
  }
  if (waiting_.empty()) {
    return std::nullopt;
  }
  Delivery oldest = std::move(waiting_.front());
  waiting_.pop_front();
  if (std::holds_alternative<Notification>(oldest)) {
    --notifications_;
  }
  return oldest;
}

void EventQueue::clear() {
  lost_.reset();
  waiting_.clear();
  notifications_ = 0;
}

}  // namespace agent
