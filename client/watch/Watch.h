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

// Prints notifications until SIGINT, SIGTERM or the count of the options, then unsubscribes. Starts
// an ORB that listens. Before the first line the exceptions of calls and Failures pass; afterwards
// only Failure (kLocal) does. REQUIRES: no other ORB runs in the process.
void watch(const AgentAccess& access, const WatchOptions& options, std::ostream& out);

}  // namespace topoctl

#endif
