// The stored network, as an interface. Each engine implements the interface in a separate folder.

#ifndef AGENT_STORE_NETWORKSTORE_H
#define AGENT_STORE_NETWORKSTORE_H

#include <cstdint>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "agent/base/Cancellation.h"
#include "agent/network/ManagedObjects.h"
#include "agent/network/Network.h"
#include "agent/network/NetworkChange.h"
#include "agent/network/NetworkSource.h"
#include "agent/store/StoreCopy.h"

namespace agent {

// The store cannot be used. what() is one line, "PATH: REASON". A plain value.
class StoreError : public std::runtime_error {
 public:
  StoreError(const std::string& path, const std::string& reason);
};

// Keeps a network. A change is durable when commit() has returned. If the process is killed during
// commit(), the change is stored as a whole or not at all.
//
// Thread-safety: none; the owner serialises the calls. Ownership: the store owns its connection to
// the engine; arguments are borrowed for the call. Errors: every function throws StoreError when
// the engine fails.
class NetworkStore {
 public:
  NetworkStore() = default;
  virtual ~NetworkStore() = default;
  NetworkStore(const NetworkStore&) = delete;
  NetworkStore& operator=(const NetworkStore&) = delete;

  // Reads the whole store. Throws StoreError if any part is damaged; the other functions detect
  // damage only in the data that they read.
  virtual void check() = 0;

  // True until a network is loaded or added.
  virtual bool isNew() = 0;

  // Stores the first network, as a whole or not at all. Also throws StoreError if the store is not
  // new, and if two objects of the network have the same id.
  virtual void load(const Network& network) = 0;

  // Calls `use` with the pieces of the stored network (NetworkSource::next()), which have no
  // objectAttributes. The network of a new store is empty. An exception of `use` ends the reading
  // and passes.
  using UsePiece = std::function<void(Network piece)>;
  virtual void read(const UsePiece& use) = 0;

  // The stored network as a whole.
  Network read();

  // Estimates the sizes of the stored network in constant time.
  virtual NetworkSizes sizes() = 0;

  // The number of the last change. Each change raises the number by one. Opening the store raises
  // the number to the milliseconds since 1970, but at least by one. So a number is never used
  // twice, not even after the store was replaced by a new store or a backup. Exceptions: the clock
  // was set back, or the replaced store had more than 1,000 changes a second since it was opened.
  virtual std::uint64_t lastChange() = 0;

  // Commits a change as a whole or not at all, and returns the number of the change. Also throws
  // StoreError if an object of an addition is stored already; throws Cancelled.
  virtual std::uint64_t commit(const NetworkChange& change, const Cancellation& cancellation) = 0;
  std::uint64_t commit(const NetworkChange& change) { return commit(change, Cancellation::none()); }

  // The ids of the objects of a type that have a label.
  virtual std::vector<std::string> idsWithLabel(std::int32_t type, const std::string& label) = 0;

  // Empty for an object without an owner.
  virtual std::string ownerOf(const ObjectKey& key) = 0;

  // The additional information of an object, in the stored order.
  virtual InfoPairs additionalInfoOf(const ObjectKey& key) = 0;

  // The objects that have an owner or additional information, in the order of their keys.
  virtual std::vector<ObjectAttributes> attributes() = 0;

  // The size of the stored data in bytes.
  virtual std::uint64_t bytes() = 0;

  // Begins a backup. The copy must not outlive the store.
  virtual std::unique_ptr<StoreCopy> beginCopy() = 0;
};

}  // namespace agent

#endif
