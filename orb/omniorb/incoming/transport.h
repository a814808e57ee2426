// The transport of servers, with limits for incoming connections and requests.

#ifndef ORB_OMNIORB_INCOMING_TRANSPORT_H
#define ORB_OMNIORB_INCOMING_TRANSPORT_H

#include <memory>
#include <string>
#include <vector>

#include "serverstate.h"

namespace orb {

// Returns the ORB's names for the endpoints in the state. The state of the latest call applies to
// endpoints that the ORB opens. REQUIRES: the ORB is not initialised yet.
std::vector<std::string> limitedEndpoints(const std::shared_ptr<ServerState>& state);

}  // namespace orb

#endif
