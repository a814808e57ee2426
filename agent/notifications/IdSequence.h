// The ids of notifications.

#ifndef AGENT_NOTIFICATIONS_IDSEQUENCE_H
#define AGENT_NOTIFICATIONS_IDSEQUENCE_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "agent/notifications/Gap.h"

namespace agent {

// Makes ids of (change number, position in the change):
//
//   id = change << 20 | position
//
// The position counts the notifications of a change from 1. Every open of the store raises the
// change number to the milliseconds since 1970 at least, and every change raises the number by one,
// so that an id fits in 63 bits until the year 2248. The store gives every number once, so that ids
// are unique over restarts and restored backups.
//
// Ids rise strictly. A notification of a change that is not newer than the last id's change, or of
// no change, gets the next position of the last id's change. All notifications beyond the last
// position of a change share the last position as the id of one gap.
//
// Remembers the ids of at least 131,072 changes, to count the notifications since an id.
//
// Thread-safety: none.
// Ownership: a plain value.
// Errors: only the constructor throws, std::bad_alloc.
class IdSequence {
 public:
  static constexpr unsigned kPositionBits = 20;
  static constexpr std::uint64_t kLastPosition = (std::uint64_t{1} << kPositionBits) - 1;
  // A larger number, as of a damaged store, counts as this number.
  static constexpr std::uint64_t kLastChange = (std::uint64_t{1} << 43) - 1;

  static constexpr std::uint64_t kNoChange = 0;

  struct Limits {
    std::uint64_t lastPosition = kLastPosition;  // from 2 to kLastPosition
    // Runs of consecutive ids to remember, 2 at least. A full history forgets its older half.
    std::size_t history = 262144;  // 4 MiB
  };

  // lastChange: the newest change before this sequence was made.
  IdSequence(std::uint64_t lastChange, const Limits& limits);

  // The next id, for a notification of a change or of kNoChange. Nothing when the change has no
  // position left: last() is then the id of a gap that contains the notification.
  std::optional<std::uint64_t> next(std::uint64_t change) noexcept;

  // The next id, for a gap of an unknown number of notifications.
  std::uint64_t nextForGap() noexcept;

  // The newest id; at first lower than every id of the sequence and higher than every id of the
  // changes before.
  std::uint64_t last() const { return last_; }

  // The notifications with an id above this id, if there are any. REQUIRES: id <= last().
  std::optional<Gap> gapSince(std::uint64_t id) const;

 private:
  // Consecutive ids of notifications.
  struct Run {
    std::uint64_t first;
    std::uint64_t before;  // notifications before this run
  };

  bool isAtLastPosition() const;
  void remember(std::uint64_t id) noexcept;
  void forget() noexcept;
  std::uint64_t countSince(std::uint64_t id) const;

  const Limits limits_;
  std::uint64_t last_;
  std::uint64_t countableFrom_;  // lowest id since which all notifications are known
  std::uint64_t made_ = 0;       // notifications
  std::vector<Run> history_;     // never grows beyond its first capacity
};

}  // namespace agent

#endif
