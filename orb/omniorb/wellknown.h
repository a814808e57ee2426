// Objects with fixed object keys.

#ifndef ORB_OMNIORB_WELLKNOWN_H
#define ORB_OMNIORB_WELLKNOWN_H

#include <memory>
#include <string>

#include "orb/orb.h"

namespace orb {

// See Server::wellKnownObject().
std::unique_ptr<WellKnownObject> makeWellKnownObject(CORBA::ORB_ptr orb, const std::string& key);

}  // namespace orb

#endif
