// A range of notifications that a receiver does not get.

#ifndef AGENT_NOTIFICATIONS_GAP_H
#define AGENT_NOTIFICATIONS_GAP_H

#include <cstdint>

namespace agent {

// Plain value. A receiver gets a gap report (NT_EVENTS_LOST) in the place of the notifications.
struct Gap {
  std::uint64_t first = 0;  // lowest id of the range
  std::uint64_t last = 0;   // highest id of the range
  std::uint64_t count = 0;  // notifications in the range; 0: unknown
};

}  // namespace agent

#endif
