#include "agent/OpenNetwork.h"

#include <cstddef>
#include <filesystem>
#include <string>
#include <system_error>
#include <utility>

#include "agent/base/Log.h"
#include "agent/formats/NetworkReader.h"
#include "agent/process/Heap.h"
#include "agent/store/sqlite/SqliteStore.h"

namespace agent {
namespace {

// Rejects a store that would be made by mistake, such as after a mistyped path.
void requireStore(const Options& options) {
  const bool mayBeNew =
      options.createStore || !options.network.empty() || options.store == SqliteStore::kInMemory;
  if (!mayBeNew && !SqliteStore::exists(options.store)) {
    throw StoreError(options.store,
                     "there is no store (--network FILE loads a network into a new store, --create "
                     "makes an empty one)");
  }
}

// The memory for the records of a network, over the size of the file of the network.
constexpr std::size_t kMemoryOverNetworkFile = 4;
constexpr std::size_t kMemoryOverStore = 6;

void useLargePagesFor(const std::filesystem::path& file, std::size_t memoryOverFile) {
  std::error_code error;
  const auto size = static_cast<std::size_t>(std::filesystem::file_size(file, error));
  if (!error) {
    useLargePages(size * memoryOverFile);
  }
}

Network readOrThrow(const std::filesystem::path& file) {
  Result<Network> network = readNetworkFile(file);
  if (!network.ok()) {
    throw NetworkFileError(network.outcome().reason);
  }
  return std::move(network.value());
}

// Reads an existing store. A damaged store is reported by its check, whose reason is more precise.
Network readOrCheck(NetworkStore& store, bool checkStore) {
  try {
    return store.read();
  } catch (...) {
    if (checkStore) {
      store.check();
    }
    throw;
  }
}

}  // namespace

Network openNetwork(const Options& options, std::unique_ptr<NetworkStore>& store,
                    std::future<void>& check) {
  requireStore(options);
  const bool load = !options.network.empty() && SqliteStore::needsNetwork(options.store);
  Network network;
  if (load) {
    useLargePagesFor(options.network, kMemoryOverNetworkFile);
    network = readOrThrow(options.network);
  }
  store = std::make_unique<SqliteStore>(options.store);
  if (!load) {
    if (!options.network.empty()) {
      log(kLogEvents, "store " + options.store + " contains a network already, " +
                          options.network.string() + " is not loaded");
    }
    useLargePagesFor(options.store, kMemoryOverStore);
    network = readOrCheck(*store, options.checkStore);
    if (options.checkStore) {
      check = std::async([&opened = *store] { opened.check(); });
    }
    return network;
  }
  store->load(network);
  return network;
}

}  // namespace agent
