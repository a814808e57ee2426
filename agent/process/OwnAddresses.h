// The network addresses of this host.

#ifndef AGENT_PROCESS_OWNADDRESSES_H
#define AGENT_PROCESS_OWNADDRESSES_H

#include <string>
#include <vector>

namespace agent {

// Returns the numeric addresses of all network interfaces at the moment of the call; none when the
// system does not give them. Thread-safety: any thread. Throws std::bad_alloc.
std::vector<std::string> ownAddresses();

}  // namespace agent

#endif
