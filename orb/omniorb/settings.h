// The settings with which the ORB is started.

#ifndef ORB_OMNIORB_SETTINGS_H
#define ORB_OMNIORB_SETTINGS_H

#include <string>

#include "orb/orb.h"

namespace orb {

// A new ORB for the caller; listens at "HOST:PORT", or at a free port of the loopback interface
// when that is empty. Throws CORBA::SystemException.
CORBA::ORB_ptr initOrb(const Options& options, const std::string& listenAt);

}  // namespace orb

#endif
