// Initialisation of the ORB with its settings.

#ifndef ORB_OMNIORB_SETTINGS_H
#define ORB_OMNIORB_SETTINGS_H

#include <memory>

#include "orb/orb.h"

namespace orb {

struct ServerState;

// Returns a new ORB, owned by the caller. The ORB will listen at the endpoints of the state, or at
// a free port of the loopback interface if `state` is null. Throws CORBA::SystemException.
CORBA::ORB_ptr initOrb(const Options& options, const std::shared_ptr<ServerState>& state);

}  // namespace orb

#endif
