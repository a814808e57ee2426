// The queue of one receiver.

#ifndef AGENT_NOTIFICATIONS_EVENTQUEUE_H
#define AGENT_NOTIFICATIONS_EVENTQUEUE_H

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <variant>

#include "agent/notifications/Gap.h"
#include "orb/notification.h"

namespace agent {

// A structured event with its id. All receivers share the event.
struct Notification {
  std::uint64_t id = 0;
  std::shared_ptr<const CosNotification::StructuredEvent> event;
  std::size_t bytes = 0;  // estimated memory of the event
};

// An entry of the queue: a notification or a gap report.
using Delivery = std::variant<Notification, Gap>;

// Bounded in number and in memory. A notification that would exceed a limit evicts the oldest
// notifications, and a gap takes their place.
//
// Thread-safety: none.
// Ownership: shares the events of its notifications.
// Errors: throws nothing. When memory is short, all queued notifications become one gap.
class EventQueue {
 public:
  struct Limits {
    std::size_t notifications;  // 0 counts as 1
    std::size_t bytes;          // sum over the notifications of the queue
  };

  explicit EventQueue(Limits limits);

  // Appends a notification. A notification that is larger than the limit of bytes becomes a gap and
  // evicts nothing.
  void push(Notification notification);

  // Appends a gap, merged with a gap at the end of the queue.
  void reportGap(const Gap& gap);

  // Removes the oldest entry; nothing when the queue is empty.
  std::optional<Delivery> take();

  // Puts an undelivered gap back at the front of the queue. REQUIRES: the gap is older than every
  // entry of the queue.
  void returnGap(const Gap& gap);

  void clear();

  bool empty() const { return !frontGap_ && entries_.empty(); }

  // The number of notifications and the sum of their bytes. Gaps do not count.
  std::size_t size() const { return notifications_; }
  std::size_t bytes() const { return bytes_; }

  // Notifications that became gaps, since the queue was made.
  std::uint64_t evicted() const { return evicted_; }

 private:
  bool append(Delivery delivery);
  void mergeLeadingGaps();
  void evictOldest();
  void extendFrontGap(const Gap& newer);
  void subtract(const Notification& notification);

  const Limits limits_;
  std::optional<Gap> frontGap_;  // older than all entries
  std::deque<Delivery> entries_;
  // Sums over the notifications in entries_.
  std::size_t notifications_ = 0;
  std::size_t bytes_ = 0;

  std::uint64_t evicted_ = 0;
};

}  // namespace agent

#endif
