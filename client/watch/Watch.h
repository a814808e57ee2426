// The command that prints notifications until it is interrupted.

#ifndef CLIENT_WATCH_WATCH_H
#define CLIENT_WATCH_WATCH_H

#include <cstdint>
#include <iosfwd>

#include "client/base/AgentAccess.h"
#include "client/output/Format.h"
#include "orb/orb.h"

namespace topoctl {

struct WatchOptions {
  orb::Endpoint listen;     // where notifications are received
  std::uint32_t count = 0;  // notifications to print before the end; 0: no limit
  Format format = Format::kTable;
};

// With an ORB of its own, which serves. Throws what other commands throw until the first line is
// printed, later Failure (kLocal) alone.
void watch(const AgentAccess& access, const WatchOptions& options, std::ostream& out);

}  // namespace topoctl

#endif
