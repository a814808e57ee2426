// The addresses in references of this ORB.

#ifndef ORB_OMNIORB_DESTINATIONS_H
#define ORB_OMNIORB_DESTINATIONS_H

#include <omniORB4/CORBA.h>

#include <string>
#include <vector>

#include "orb/destinations.h"

namespace orb {

// address: in the ORB's notation, "giop:TRANSPORT:ADDRESS".
Destination destinationIn(const std::string& address);

// Returns the addresses of all profiles. Thread-safety: any thread. Throws std::bad_alloc.
std::vector<Destination> destinationsIn(const omniIOR& ior);

}  // namespace orb

#endif
