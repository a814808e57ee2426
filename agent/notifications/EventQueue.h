// The notifications that wait for one receiver.

#ifndef AGENT_NOTIFICATIONS_EVENTQUEUE_H
#define AGENT_NOTIFICATIONS_EVENTQUEUE_H

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <variant>

#include "agent/notifications/StructuredEvents.h"
#include "orb/notification.h"

namespace agent {

// One event, shared by the receivers.
struct Notification {
  std::uint64_t id = 0;
  std::shared_ptr<const CosNotification::StructuredEvent> event;
};

// What a receiver gets: a notification, or word that it misses some.
using Delivery = std::variant<Notification, LostEvents>;

// Bounded: the oldest notifications go when there are too many, and word of them takes their place.
//
// Thread-safety: none.
class EventQueue {
 public:
  // The limit, one at least, is of notifications.
  explicit EventQueue(std::size_t limit);

  void push(Notification notification);

  // Word of notifications that never became one, in their place behind those that wait.
  void pushLost(const LostEvents& lost);

  // The oldest; nothing when the queue is empty.
  std::optional<Delivery> take();

  // Word that was taken last and could not be delivered, or of what was: goes before all others.
  void giveBack(const LostEvents& lost);

  void clear();

  bool empty() const { return !lost_ && waiting_.empty(); }
  std::size_t size() const { return notifications_; }

  // How many notifications had to go.
  std::uint64_t overflowed() const { return overflowed_; }

 private:
  void dropOldest();
  void addLost(const LostEvents& lost);

  const std::size_t limit_;
  std::optional<LostEvents> lost_;  // older than everything that waits
  std::deque<Delivery> waiting_;
  std::size_t notifications_ = 0;  // among those that wait
  std::uint64_t overflowed_ = 0;
};

}  // namespace agent

#endif
