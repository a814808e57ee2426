// Addresses in the ORB's own notation.

#ifndef ORB_OMNIORB_REFERENCES_H
#define ORB_OMNIORB_REFERENCES_H

#include <string>

#include "orb/orb.h"

namespace orb {

// Turns the ORB's "giop:tcp:HOST:PORT" into "HOST:PORT"; "" for another transport.
std::string withoutTransport(const std::string& address);

}  // namespace orb

#endif
