#include "agent/changes/NetworkWriter.h"

#include <utility>
#include <variant>

#include "platform/event/EventMgr.h"

namespace agent {
namespace {

struct Event {
  int id = 0;
  std::vector<NS_DOMAIN::TopoNode_T> nodes;  // empty for a change without an event
};

Event eventOf(NetworkChange change) {
  if (auto* const addition = std::get_if<NetworkAddition>(&change)) {
    return {EVENT_TOPO_NODE_CREATED, std::move(addition->network.topoNodes)};
  }
  if (auto* const removal = std::get_if<NetworkRemoval>(&change)) {
    return {EVENT_TOPO_NODE_DELETED, std::move(removal->nodes)};
  }
  if (auto* const renaming = std::get_if<NetworkRenaming>(&change)) {
    return {EVENT_TOPO_NODE_CHANGED, std::move(renaming->nodes)};
  }
  return {};
}

}  // namespace

NetworkWriter::NetworkWriter(NetworkStore& store, NetworkModel& model, RaiseEvent raise)
    : store_(store), model_(model), raise_(std::move(raise)) {}

std::unique_ptr<StoreCopy> NetworkWriter::beginCopy() {
  const std::lock_guard<std::mutex> lock(mutex_);
  return store_.beginCopy();
}

bool NetworkWriter::continueCopy(StoreCopy& copy) {
  const std::lock_guard<std::mutex> lock(mutex_);
  return copy.step();
}

void NetworkWriter::endCopy(std::unique_ptr<StoreCopy> copy) {
  const std::lock_guard<std::mutex> lock(mutex_);
  copy.reset();
}

void NetworkWriter::enter() {
  std::unique_lock<std::mutex> lock(gateMutex_);
  gateMoved_.wait(lock, [this] { return pauses_ == 0 && !changing_; });
  changing_ = true;
}

void NetworkWriter::leave() {
  {
    const std::lock_guard<std::mutex> lock(gateMutex_);
    changing_ = false;
  }
  gateMoved_.notify_all();
}

void NetworkWriter::addPause() {
  std::unique_lock<std::mutex> lock(gateMutex_);
  ++pauses_;
  gateMoved_.wait(lock, [this] { return !changing_; });
}

void NetworkWriter::endPause() {
  {
    const std::lock_guard<std::mutex> lock(gateMutex_);
    --pauses_;
  }
  gateMoved_.notify_all();
}

NetworkWriter::Pause::Pause(NetworkWriter& writer) : writer_(writer) {
  writer_.addPause();
}

NetworkWriter::Pause::~Pause() {
  writer_.endPause();
}

NetworkWriter::Change::Change(NetworkWriter& writer) : writer_(writer) {
  writer_.enter();
  lock_ = std::unique_lock<std::mutex>(writer_.mutex_);
}

NetworkWriter::Change::~Change() {
  lock_.unlock();
  writer_.leave();
}

void NetworkWriter::Change::commit(PreparedChange change, const Cancellation& cancellation) {
  const auto* const renaming = std::get_if<NetworkRenaming>(&change.change);
  if (renaming != nullptr && renaming->records.empty()) {
    return;
  }
  const std::uint64_t number = writer_.store_.commit(change.change, cancellation);
  writer_.model_.apply(change);
  raise(number, std::move(change.change));
}

// The change is committed, so whatever the listener throws is dropped.
void NetworkWriter::Change::raise(std::uint64_t number, NetworkChange change) noexcept {
  if (!writer_.raise_) {
    return;
  }
  try {
    if (auto event = eventOf(std::move(change)); !event.nodes.empty()) {
      writer_.raise_(number, event.id, std::move(event.nodes));
    }
  } catch (...) {
    return;
  }
}

}  // namespace agent
