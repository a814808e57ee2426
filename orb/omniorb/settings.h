// Initialisation of the ORB with its settings.

#ifndef ORB_OMNIORB_SETTINGS_H
#define ORB_OMNIORB_SETTINGS_H

#include <string>

#include "orb/orb.h"

namespace orb {

// Returns a new ORB, owned by the caller. The ORB will listen at "HOST:PORT", or at a free port of
// the loopback interface if `listenAt` is empty. Throws CORBA::SystemException.
CORBA::ORB_ptr initOrb(const Options& options, const std::string& listenAt);

}  // namespace orb

#endif
