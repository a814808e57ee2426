// The transport of servers: TCP with limits for incoming connections and requests.

#ifndef ORB_OMNIORB_INCOMING_TRANSPORT_H
#define ORB_OMNIORB_INCOMING_TRANSPORT_H

#include <string>

#include "orb/orb.h"

namespace orb {

// The ORB's name of an endpoint at "HOST:PORT" that keeps to the limits of the options. Those of
// the last call hold for endpoints that the ORB opens. Before the ORB is initialised.
std::string limitedEndpoint(const Options& options, const std::string& listenAt);

}  // namespace orb

#endif
