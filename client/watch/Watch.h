// The command that prints notifications until it is interrupted.

#ifndef CLIENT_WATCH_WATCH_H
#define CLIENT_WATCH_WATCH_H

#include <iosfwd>

#include "client/commandline/Options.h"

namespace topoctl {

// With an ORB of its own, which serves. Throws what other commands throw until the first line is
// printed, later Failure (kLocal) alone.
void watch(const Options& options, std::ostream& out);

}  // namespace topoctl

#endif
