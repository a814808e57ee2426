// Explains why no connection to a server can be made.

#ifndef ORB_REACHABILITY_H
#define ORB_REACHABILITY_H

#include <chrono>
#include <string>

namespace orb {

// Returns the result of takeTlsFailure() as a clause, if there is one. Otherwise looks the host up
// and tries to connect, because the exception of a failed call is the same for an unknown host and
// a refused connection. Returns a clause such as "the host 'H' is unknown: ..." or "connection
// refused by 127.0.0.1:2810"; "" when a connection can be made now.
//
// `timeout` limits each attempt to connect, but not the look-up of the host; 0: one second.
// REQUIRES: `address` is a result of addressOf() and not "". Thread-safety: any thread. Throws
// std::bad_alloc only.
std::string whyNotConnected(const std::string& address, std::chrono::milliseconds timeout);

}  // namespace orb

#endif
