// Measurement of requests from other processes.

#ifndef ORB_TAO_METERING_H
#define ORB_TAO_METERING_H

#include <tao/Request_Dispatcher.h>

#include <memory>

#include "orb/orb.h"

namespace orb {

// Returns the first dispatch step of an ORB whose requests the meter receives.
// REQUIRES: the meter is not empty.
std::unique_ptr<TAO_Request_Dispatcher> makeMeteredDispatcher(RequestMeter meter);

}  // namespace orb

#endif
