// Measurement of requests from other processes.

#ifndef ORB_TAO_METERING_H
#define ORB_TAO_METERING_H

#include <tao/Request_Dispatcher.h>

#include <memory>

#include "orb/orb.h"

namespace orb {

// Returns a dispatcher for an ORB, which calls the meter after each request.
// REQUIRES: the meter is not empty.
std::unique_ptr<TAO_Request_Dispatcher> makeMeteredDispatcher(RequestMeter meter);

}  // namespace orb

#endif
