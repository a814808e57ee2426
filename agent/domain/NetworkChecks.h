// What must hold between the parts of a network. Part of the network reader.

#ifndef AGENT_DOMAIN_NETWORKCHECKS_H
#define AGENT_DOMAIN_NETWORKCHECKS_H

#include "agent/domain/Network.h"

namespace agent {

// Ids stand once in their list; the parent of every topology node is another node or a root marker;
// no node is its own ancestor. Throws Refusal, with a place in the native format. Time and memory
// are linear in the network.
void checkNetwork(const Network& network);

}  // namespace agent

#endif
