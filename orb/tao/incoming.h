// IIOP as the server speaks it: connections are counted, and the ORB is given whole messages only.

#ifndef ORB_TAO_INCOMING_H
#define ORB_TAO_INCOMING_H

#include <tao/Protocol_Factory.h>

#include <memory>

#include "connections.h"

namespace orb {

// The connections of the ORB that starts next. Before it is initialised.
void setConnections(std::shared_ptr<Connections> connections);

// Those of the ORB that started last; null before the first one.
std::shared_ptr<Connections> ownConnections();

// In place of the ORB's own IIOP factory: connections out of the process are the ORB's own.
std::unique_ptr<TAO_Protocol_Factory> makeProtocol();

}  // namespace orb

#endif
