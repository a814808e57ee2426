// Addresses in the ORB's own notation.

#ifndef ORB_OMNIORB_REFERENCES_H
#define ORB_OMNIORB_REFERENCES_H

#include <string>

#include "orb/orb.h"

namespace orb {

// The first address of a reference, "giop:tcp:HOST:PORT"; "" when there is none.
std::string publishedAddress(CORBA::Object_ptr reference);

// REQUIRES: "giop:tcp:HOST:PORT".
Endpoint parseAddress(const std::string& address);

}  // namespace orb

#endif
