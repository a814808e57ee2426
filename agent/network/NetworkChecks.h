// Checks of the relations between the records of a network.
//
// Thread-safety: any thread. Errors: kInvalidInput with the reason "PLACE: REASON", where the place
// is a path in the native format. Time and memory are linear in the network.

#ifndef AGENT_NETWORK_NETWORKCHECKS_H
#define AGENT_NETWORK_NETWORKCHECKS_H

#include <cstddef>
#include <string>
#include <string_view>

#include "agent/base/OperationResult.h"
#include "agent/network/ManagedObjects.h"
#include "agent/network/Network.h"
#include "agent/network/NetworkPlaces.h"

namespace agent {

// Succeeds if every id is unique in its list, the parent of every topology node is another node or
// a root marker, no node is its own ancestor, every node of the type element has a number in its
// id, no two nodes have the same name for clients, and all additional information is as
// described in Network.h.
Outcome checkNetwork(const Network& network);

// As checkNetwork(), but for an addition to another network: a parent may be missing.
Outcome checkPart(const Network& network);

// The reasons to refuse a node of the type element: the id has no number; or the node `other` has
// the same name for clients.
std::string problemWithElementId(std::string_view nodeId);
std::string problemWithSharedObject(std::string_view nodeId, const NumberedObject& object,
                                    const std::string& other);

// kInvalidInput with the reason "PLACE: REASON", made printable.
Outcome invalidInput(const std::string& place, const std::string& reason);

}  // namespace agent

#endif
