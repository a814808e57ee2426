// Unguessable object ids.

#ifndef AGENT_BASE_RANDOMID_H
#define AGENT_BASE_RANDOMID_H

#include "orb/orb.h"

namespace agent {

// Returns an object id of 128 bits from the random source of the operating system. An object with
// such an id on a POA with user ids is reachable only for clients that received its reference.
//
// Thread-safety: any thread. Ownership: the caller owns the id. Errors: throws std::system_error
// when the random source fails.
PortableServer::ObjectId* randomObjectId();

}  // namespace agent

#endif
