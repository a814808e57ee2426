#include "agent/changes/NetworkWriter.h"

#include <utility>
#include <variant>
#include <vector>

#include "platform/event/EventMgr.h"

namespace agent {
namespace {

struct Event {
  int id = 0;
  std::vector<NS_DOMAIN::TopoNode_T> nodes;  // an event without nodes is not raised
};

// The events of a change, in their order.
std::vector<Event> eventsOf(NetworkChange change) {
  if (auto* const addition = std::get_if<NetworkAddition>(&change)) {
    return {{EVENT_TOPO_NODE_CREATED, std::move(addition->network.topoNodes)}};
  }
  if (auto* const removal = std::get_if<NetworkRemoval>(&change)) {
    return {{EVENT_TOPO_NODE_DELETED, std::move(removal->nodes)}};
  }
  if (auto* const replacement = std::get_if<NetworkReplacement>(&change)) {
    return {{EVENT_TOPO_NODE_DELETED, std::move(replacement->deletedNodes)},
            {EVENT_TOPO_NODE_CREATED, std::move(replacement->createdNodes)},
            {EVENT_TOPO_NODE_CHANGED, std::move(replacement->changedNodes)}};
  }
  if (auto* const renaming = std::get_if<NetworkRenaming>(&change)) {
    return {{EVENT_TOPO_NODE_CHANGED, std::move(renaming->nodes)}};
  }
  if (auto* const update = std::get_if<RecordUpdate>(&change)) {
    if (auto* const node = std::get_if<NS_DOMAIN::TopoNode_T>(&update->record)) {
      return {{EVENT_TOPO_NODE_CHANGED, {std::move(*node)}}};
    }
  }
  return {};
}

}  // namespace

NetworkWriter::NetworkWriter(NetworkStore& store, NetworkModel& model, RaiseEvent raise)
    : store_(store), model_(model), raise_(std::move(raise)) {}

template <typename Call>
auto NetworkWriter::counted(const Call& call) {
  try {
    return call();
  } catch (const StoreError&) {
    const MutexLock lock(failuresMutex_);
    ++failures_.count;
    throw;
  }
}

NetworkWriter::StoreFailures NetworkWriter::storeFailures() const {
  const MutexLock lock(failuresMutex_);
  return failures_;
}

std::uint64_t NetworkWriter::commitToStore(const NetworkChange& change,
                                           const Cancellation& cancellation) {
  std::optional<std::chrono::steady_clock::time_point> failed;
  const auto report = [this, &failed] {
    const MutexLock lock(failuresMutex_);
    failures_.commitFailed = failed;
  };
  try {
    const std::uint64_t number = counted([&] {
      mutex_.assertHeld();
      return store_.commit(change, cancellation);
    });
    report();
    return number;
  } catch (const StoreError&) {
    failed = std::chrono::steady_clock::now();
    report();
    throw;
  }
}

std::pair<std::string, InfoPairs> NetworkWriter::attributesOf(const ObjectKey& key) {
  const MutexLock lock(mutex_);
  return counted([&] {
    mutex_.assertHeld();
    return std::pair(store_.ownerOf(key), store_.additionalInfoOf(key));
  });
}

Network NetworkWriter::storedNetwork() {
  const MutexLock lock(mutex_);
  return counted([this] {
    mutex_.assertHeld();
    Network network = store_.read();
    network.objectAttributes = store_.attributes();
    return network;
  });
}

std::uint64_t NetworkWriter::storedBytes() {
  const MutexLock lock(mutex_);
  return counted([this] {
    mutex_.assertHeld();
    return store_.bytes();
  });
}

std::unique_ptr<StoreCopy> NetworkWriter::beginCopy() {
  const MutexLock lock(mutex_);
  return counted([this] {
    mutex_.assertHeld();
    return store_.beginCopy();
  });
}

bool NetworkWriter::continueCopy(StoreCopy& copy) {
  const MutexLock lock(mutex_);
  return counted([&copy] { return copy.step(); });
}

void NetworkWriter::endCopy(std::unique_ptr<StoreCopy> copy) {
  const MutexLock lock(mutex_);
  copy.reset();
}

NetworkWriter::Change::Turn::Turn(NetworkWriter& writer) : writer_(writer) {
  MutexLock lock(writer_.gateMutex_);
  writer_.gateMoved_.wait(lock.native(), [this]() REQUIRES(writer_.gateMutex_) {
    return writer_.pauses_ == 0 && !writer_.changing_;
  });
  writer_.changing_ = true;
}

NetworkWriter::Change::Turn::~Turn() {
  {
    const MutexLock lock(writer_.gateMutex_);
    writer_.changing_ = false;
  }
  writer_.gateMoved_.notify_all();
}

NetworkWriter::Pause::Pause(NetworkWriter& writer, std::chrono::milliseconds atMost)
    : writer_(writer) {
  MutexLock lock(writer_.gateMutex_);
  ++writer_.pauses_;
  writer_.gateMoved_.wait_for(lock.native(), atMost,
                              [this]() REQUIRES(writer_.gateMutex_) { return !writer_.changing_; });
}

NetworkWriter::Pause::~Pause() {
  {
    const MutexLock lock(writer_.gateMutex_);
    --writer_.pauses_;
  }
  writer_.gateMoved_.notify_all();
}

NetworkWriter::Change::Change(NetworkWriter& writer)
    : writer_(writer), turn_(writer), lock_(writer.mutex_) {}

NetworkStore& NetworkWriter::Change::store() {
  writer_.mutex_.assertHeld();
  return writer_.store_;
}

void NetworkWriter::Change::commit(PreparedChange change, const Cancellation& cancellation) {
  const auto* const renaming = std::get_if<NetworkRenaming>(&change.change);
  if (renaming != nullptr && renaming->records.empty()) {
    return;
  }
  writer_.mutex_.assertHeld();
  const std::uint64_t number = writer_.commitToStore(change.change, cancellation);
  writer_.model_.apply(change);
  raise(number, std::move(change.change));
}

// The change is committed, so an exception of the listener cannot undo the change.
void NetworkWriter::Change::raise(std::uint64_t number, NetworkChange change) noexcept {
  if (!writer_.raise_) {
    return;
  }
  try {
    for (Event& event : eventsOf(std::move(change))) {
      if (!event.nodes.empty()) {
        writer_.raise_(number, event.id, std::move(event.nodes));
      }
    }
  } catch (...) {
    return;
  }
}

}  // namespace agent
