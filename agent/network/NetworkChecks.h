// Checks of the relations between the records of a network.
//
// Thread-safety: any thread. Errors: kInvalidInput with the reason "PLACE: REASON", where the place
// is a path in the native format. Time and memory are linear in the network.

#ifndef AGENT_NETWORK_NETWORKCHECKS_H
#define AGENT_NETWORK_NETWORKCHECKS_H

#include <cstddef>
#include <string>

#include "agent/base/OperationResult.h"
#include "agent/network/Network.h"

namespace agent {

// Succeeds if every id is unique in its list, the parent of every topology node is another node or
// a root marker, and no node is its own ancestor.
Outcome checkNetwork(const Network& network);

// As checkNetwork(), for a network that is to be added to another network: a parent may be missing.
Outcome checkPart(const Network& network);

// kInvalidInput with the reason "PLACE: REASON", made printable.
Outcome invalidInput(const std::string& place, const std::string& reason);

// The path of a record or of its field, such as topoNodes[3].parent.
std::string placeOf(const char* list, std::size_t index, const char* field = "");

}  // namespace agent

#endif
