#include "agent/OpenNetwork.h"

#include <cstddef>
#include <filesystem>
#include <string>
#include <system_error>
#include <utility>

#include "agent/base/Log.h"
#include "agent/formats/NetworkReader.h"
#include "agent/process/Heap.h"
#include "agent/store/StoreReading.h"
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

}  // namespace

std::unique_ptr<NetworkSource> openNetwork(const Options& options,
                                           std::unique_ptr<NetworkStore>& store) {
  requireStore(options);
  if (!options.network.empty() && SqliteStore::needsNetwork(options.store)) {
    useLargePagesFor(options.network, kMemoryOverNetworkFile);
    Network network = readOrThrow(options.network);
    store = std::make_unique<SqliteStore>(options.store);
    store->load(network);
    return std::make_unique<WholeNetwork>(std::move(network));
  }
  store = std::make_unique<SqliteStore>(options.store);
  if (!options.network.empty()) {
    log(kLogEvents, "store " + options.store + " contains a network already, " +
                        options.network.string() + " is not loaded");
  }
  useLargePagesFor(options.store, kMemoryOverStore);
  return std::make_unique<StoreReading>(*store, options.checkStore);
}

}  // namespace agent
