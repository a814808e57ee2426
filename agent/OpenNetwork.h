// Opens the store of the agent at its start.

#ifndef AGENT_OPENNETWORK_H
#define AGENT_OPENNETWORK_H

#include <future>
#include <memory>
#include <stdexcept>

#include "agent/Options.h"
#include "agent/network/Network.h"
#include "agent/store/NetworkStore.h"

namespace agent {

// The network file of the options cannot be used. what() is one line, "FILE: PLACE: REASON". A
// plain value.
class NetworkFileError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Opens the store of the options and returns its network. A new store is loaded from the network
// file of the options. The network file is read before the store is made, so that a bad network
// file leaves no store behind.
//
// The check of an existing store for damage runs on another thread, so that the caller can use the
// network meanwhile. `check` is its result, and remains without a state when no check runs. The
// caller waits for the result before the caller uses the store, and destroys `check` before the
// store.
//
// Thread-safety: one thread. Ownership: the caller owns the store. Errors: throws NetworkFileError;
// throws StoreError when the store cannot be used, and when the store does not exist while the
// options neither name a network file nor ask for an empty store. `check` throws StoreError for a
// damaged store.
Network openNetwork(const Options& options, std::unique_ptr<NetworkStore>& store,
                    std::future<void>& check);

}  // namespace agent

#endif
