#include "agent/notifications/EventQueue.h"

#include <algorithm>
#include <new>
#include <utility>

namespace agent {
namespace {

Gap merged(const Gap& older, const Gap& newer) {
  const bool isKnown = older.count != 0 && newer.count != 0;
  return {older.first, newer.last, isKnown ? older.count + newer.count : 0};
}

}  // namespace

EventQueue::EventQueue(Limits limits)
    : limits_{std::max<std::size_t>(limits.notifications, 1), limits.bytes} {}

void EventQueue::push(Notification notification) {
  const Gap gap{notification.id, notification.id, 1};
  const std::size_t bytes = notification.bytes;
  if (bytes > limits_.bytes) {
    reportGap(gap);
    ++evicted_;
    return;
  }
  while (notifications_ == limits_.notifications || bytes_ + bytes > limits_.bytes) {
    evictOldest();
  }
  if (append(std::move(notification))) {
    ++notifications_;
    bytes_ += bytes;
  } else {
    extendFrontGap(gap);
    ++evicted_;
  }
}

void EventQueue::reportGap(const Gap& gap) {
  if (entries_.empty()) {
    extendFrontGap(gap);
    return;
  }
  if (auto* const last = std::get_if<Gap>(&entries_.back())) {
    *last = merged(*last, gap);
  } else if (!append(gap)) {
    extendFrontGap(gap);
  }
}

// False when memory is short. Then entries_ is empty, and frontGap_ covers all former entries, but
// not the delivery.
bool EventQueue::append(Delivery delivery) {
  try {
    entries_.emplace_back(std::move(delivery));
    return true;
  } catch (const std::bad_alloc&) {
    while (notifications_ != 0) {
      evictOldest();
    }
    mergeLeadingGaps();
    return false;
  }
}

// Moves the gaps before the oldest notification into frontGap_.
void EventQueue::mergeLeadingGaps() {
  while (!entries_.empty() && std::holds_alternative<Gap>(entries_.front())) {
    extendFrontGap(std::get<Gap>(entries_.front()));
    entries_.pop_front();
  }
}

// REQUIRES: entries_ contains a notification.
void EventQueue::evictOldest() {
  mergeLeadingGaps();
  const auto& oldest = std::get<Notification>(entries_.front());
  extendFrontGap({oldest.id, oldest.id, 1});
  subtract(oldest);
  entries_.pop_front();
  ++evicted_;
}

void EventQueue::subtract(const Notification& notification) {
  --notifications_;
  bytes_ -= notification.bytes;
}

void EventQueue::extendFrontGap(const Gap& newer) {
  frontGap_ = frontGap_ ? merged(*frontGap_, newer) : newer;
}

void EventQueue::returnGap(const Gap& gap) {
  frontGap_ = frontGap_ ? merged(gap, *frontGap_) : gap;
}

std::optional<Delivery> EventQueue::take() {
  if (frontGap_) {
    mergeLeadingGaps();
    return *std::exchange(frontGap_, std::nullopt);
  }
  if (entries_.empty()) {
    return std::nullopt;
  }
  Delivery oldest = std::move(entries_.front());
  entries_.pop_front();
  if (const auto* const notification = std::get_if<Notification>(&oldest)) {
    subtract(*notification);
  }
  return oldest;
}

void EventQueue::clear() {
  frontGap_.reset();
  entries_.clear();
  notifications_ = 0;
  bytes_ = 0;
}

}  // namespace agent
