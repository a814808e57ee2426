// Opens the store of the agent at its start.

#ifndef AGENT_OPENNETWORK_H
#define AGENT_OPENNETWORK_H

#include <memory>
#include <stdexcept>

#include "agent/Options.h"
#include "agent/network/NetworkSource.h"
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
// Another thread reads an existing store and checks it for damage, so that the caller can use the
// first records meanwhile. The caller calls finish() before the caller uses the store, and
// destroys the network before the store.
//
// Thread-safety: one thread. Ownership: the caller owns the network and the store. Errors: throws
// NetworkFileError; throws StoreError when the store cannot be used, and when the store does not
// exist while the options neither name a network file nor ask for an empty store. The functions of
// the network throw StoreError as those of StoreReading.
std::unique_ptr<NetworkSource> openNetwork(const Options& options,
                                           std::unique_ptr<NetworkStore>& store);

}  // namespace agent

#endif
