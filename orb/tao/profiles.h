// The profiles of references, and their addresses.

#ifndef ORB_TAO_PROFILES_H
#define ORB_TAO_PROFILES_H

#include <tao/Profile.h>

#include <memory>
#include <vector>

#include "orb/orb.h"

class TAO_MProfile;
class TAO_ORB_Core;

namespace orb {

// The functions are thread-safe. None fails, except with std::bad_alloc.

// The endpoints of a profile in their order; none for a profile of an unknown kind.
std::vector<Endpoint> endpointsIn(TAO_Profile& profile);

// Adds the components for the type of the ORB and the code sets, which the ORB's own profiles have.
void addOrbComponents(TAO_Profile& profile, TAO_ORB_Core& core);

// Adds the port of TLS. REQUIRES: a profile of IIOP.
void addTlsComponent(TAO_Profile& profile, std::uint16_t port);

// Encodes and decodes a profile: returns the profile that a process with a received reference has.
// Takes ownership of the profile; the caller owns the result. Null if encoding fails.
TAO_Profile* decoded(TAO_Profile* profile, TAO_ORB_Core& core);

// Adds a profile, or null, to the profiles, which own it. Returns 0, or -1 for an error.
int giveProfile(TAO_MProfile& profiles, TAO_Profile* profile);

}  // namespace orb

#endif
