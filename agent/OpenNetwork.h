// The network that the agent serves, and the store that keeps it.

#ifndef AGENT_OPENNETWORK_H
#define AGENT_OPENNETWORK_H

#include <memory>

#include "agent/Options.h"
#include "agent/network/Network.h"
#include "agent/store/NetworkStore.h"

namespace agent {

// Opens the store of the options and returns the network in it. A new store is loaded from the
// network file of the options. The network file is read before a store is made, so that a bad
// network file leaves nothing behind.
//
// Throws StoreError when the store cannot be used, and when there is no store while the options
// give no network file and do not ask for an empty store; NetworkError when the network file cannot
// be used.
Network openNetwork(const Options& options, std::unique_ptr<NetworkStore>& store);

}  // namespace agent

#endif
