// Checks of networks from clients before they become part of the served network. Part of the
// services.

#ifndef AGENT_CHANGES_NETWORKINPUT_H
#define AGENT_CHANGES_NETWORKINPUT_H

#include <string>

#include "agent/base/OperationResult.h"
#include "agent/model/NetworkModel.h"
#include "agent/network/Network.h"
#include "agent/network/NetworkPlaces.h"

namespace agent {

// Thread-safety of all functions: any thread. Errors: the reason of an Outcome about a network
// begins with "PLACE: "; std::bad_alloc.

enum class NetworkExtent { kPart, kWhole };

// Checks the texts of all records and the relations between the records. kPart: an addition to
// another network, so parents may be missing. Fails with kInvalidName.
Outcome checkNewNetwork(const Network& network, const NetworkPlaces& places, NetworkExtent extent);

// --- Checks against the model. Their results are valid until the end of the change.

// Fails with kAlreadyExists when the node would have the same name for clients as a node of the
// model, such as the nodes NE=7 and 7. The reason begins with `subject`.
Outcome checkObject(const NS_DOMAIN::TopoNode_T& node, const NetworkModel& model,
                    const std::string& subject);

// Checks that the model has no object of the network, and that every parent is in the network or in
// the model. Fails with kAlreadyExists and kEntityNotFound.
Outcome checkAddition(const Network& network, const NetworkModel& model,
                      const NetworkPlaces& places);

// Clears the fields that are not stored.
void clearUnstored(Network& network);

}  // namespace agent

#endif
