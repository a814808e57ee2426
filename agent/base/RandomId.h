// Object ids that a client cannot guess.

#ifndef AGENT_BASE_RANDOMID_H
#define AGENT_BASE_RANDOMID_H

#include "orb/orb.h"

namespace agent {

// A new object id of 128 bits from the random source of the operating system, for the caller. For
// objects on a POA with user ids: a client that was not given a reference cannot make one. Throws
// std::system_error when the random source fails. Thread-safety: any thread.
PortableServer::ObjectId* randomObjectId();

}  // namespace agent

#endif
