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
  std::size_t bytes = 0;  // memory that the event takes, estimated
};

// What a receiver gets: a notification, or word that it misses some.
using Delivery = std::variant<Notification, LostEvents>;

// Bounded in number and in memory: when a notification would exceed a limit, the oldest ones are
// dropped and a gap (LostEvents) takes their place. When memory is short, all waiting notifications
// become one gap: nothing here throws.
//
// Thread-safety: none.
class EventQueue {
 public:
  struct Limits {
    std::size_t notifications;  // one at least
    std::size_t bytes;          // of all notifications in the queue together
  };

  explicit EventQueue(Limits limits);

  // A notification that alone exceeds the limit of bytes is dropped, the others stay.
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
  std::size_t bytes() const { return bytes_; }

  // How many notifications were dropped because of the limits.
  std::uint64_t overflowed() const { return overflowed_; }

 private:
  bool append(Delivery delivery);
  void takeGaps();
  void dropOldest();
  void addLost(const LostEvents& lost);
  void removed(const Notification& notification);

  const Limits limits_;
  std::optional<LostEvents> lost_;  // older than everything that waits
  std::deque<Delivery> waiting_;
  // Of the notifications in waiting_.
  std::size_t notifications_ = 0;
  std::size_t bytes_ = 0;

  std::uint64_t overflowed_ = 0;
};

}  // namespace agent

#endif
