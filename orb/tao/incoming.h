// The server side of IIOP: limits connections and passes only complete requests to the ORB.

#ifndef ORB_TAO_INCOMING_H
#define ORB_TAO_INCOMING_H

#include <tao/Protocol_Factory.h>

#include <memory>

#include "connections.h"

namespace orb {

// Sets the connections of the ORB that starts next; null after the end of the ORB.
// REQUIRES: the ORB is not initialised.
void setConnections(std::shared_ptr<Connections> connections);

// Returns the connections of the starting or running ORB; null without an ORB.
std::shared_ptr<Connections> currentConnections();

// Returns a replacement of the ORB's IIOP factory. Outgoing connections are those of the ORB.
std::unique_ptr<TAO_Protocol_Factory> makeProtocol();

}  // namespace orb

#endif
