// The transport of servers: TCP with limits for incoming connections and requests.

#ifndef ORB_OMNIORB_INCOMING_TRANSPORT_H
#define ORB_OMNIORB_INCOMING_TRANSPORT_H

#include <string>

#include "orb/orb.h"

namespace orb {

// Returns the ORB's name for an endpoint at "HOST:PORT" with the limits of the options. The limits
// of the latest call apply to endpoints that the ORB opens. REQUIRES: the ORB is not initialised
// yet.
std::string limitedEndpoint(const Options& options, const std::string& listenAt);

}  // namespace orb

#endif
