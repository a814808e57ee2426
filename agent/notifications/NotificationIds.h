// The ids of notifications.

#ifndef AGENT_NOTIFICATIONS_NOTIFICATIONIDS_H
#define AGENT_NOTIFICATIONS_NOTIFICATIONIDS_H

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace agent {

// Hands out rising ids from blocks that are reserved for good: an id is never given twice, also not
// by a later run of the agent.
//
// The next block is reserved when the second half of the present one begins, and again with every
// id from there on while that fails. So a failure that passes does no harm. When one lasts, the
// last id of the block is kept: it stands for all notifications that are missed until ids can be
// reserved again.
//
// Thread-safety: none.
class NotificationIds {
 public:
  // Reserves so many ids, from 1 on, and returns the first. May throw a std::exception.
  using Reserve = std::function<std::uint64_t(std::uint64_t count)>;

  static constexpr std::uint64_t kBlock = 1000;

  // Reserves the first block; throws what the reservation throws. A block has two ids or more.
  explicit NotificationIds(Reserve reserve, std::uint64_t block = kBlock);

  // Nothing when no id is left and none can be reserved: then last() stands for what is missed.
  std::optional<std::uint64_t> next();

  // An id that stands for notifications that were never made, as many as they are.
  std::uint64_t standIn();

  // The last id that was handed out; before the first, the id before the first block.
  std::uint64_t last() const { return last_; }

  // How many notifications there were after one that is not newer than last(); 0 when it is not
  // known, because not all ids since are of this run, or none, or one of them stands for others.
  std::uint64_t countSince(std::uint64_t id) const;

 private:
  void reserveNext();
  void failed(const std::string& why);
  void enterFollowing();

  const Reserve reserve_;
  const std::uint64_t block_;
  std::uint64_t last_ = 0;
  // Ids since this one were handed out by this run without a gap, each for one notification.
  std::uint64_t gaplessFrom_ = 0;
  std::uint64_t end_ = 0;                   // of the present block
  std::optional<std::uint64_t> following_;  // first of the next block
  bool failing_ = false;                    // at the last reservation
  bool standingIn_ = false;  // the last id of the present block stands for what is missed
};

}  // namespace agent

#endif
