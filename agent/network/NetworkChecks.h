// What must hold between the parts of a network.

#ifndef AGENT_NETWORK_NETWORKCHECKS_H
#define AGENT_NETWORK_NETWORKCHECKS_H

#include <cstddef>
#include <string>

#include "agent/network/Network.h"

namespace agent {

// For all checks: they throw Refusal, with a place in the native format. Time and memory are linear
// in the network.

// Ids stand once in their list; the parent of every topology node is another node or a root marker;
// no node is its own ancestor.
void checkNetwork(const Network& network);

// The same for a network that is to be added to another one: a parent may also be a node of that,
// which is not asked here.
void checkPart(const Network& network);

// The places that refusals name, such as topoNodes[3].parent.
std::string placeOf(const char* list, std::size_t index, const char* field = "");

}  // namespace agent

#endif
