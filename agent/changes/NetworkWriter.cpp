#include "agent/changes/NetworkWriter.h"

#include <utility>

namespace agent {

NetworkWriter::NetworkWriter(NetworkStore& store, NetworkModel& model, RaiseEvent raise)
    : store_(store), model_(model), raise_(std::move(raise)) {}

std::uint64_t NetworkWriter::reserveNotificationIds(std::uint64_t count) {
  const std::lock_guard<std::mutex> lock(mutex_);
  return store_.reserveNotificationIds(count);
}

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

void NetworkWriter::Change::rename(NetworkRenaming renaming, const std::string& name) {
  if (renaming.records.empty()) {
    return;
  }
  const std::uint64_t change = store().rename(renaming.records, name);
  model().show(renaming);
  raise(change, EVENT_TOPO_NODE_CHANGED, std::move(renaming.nodes));
}

void NetworkWriter::Change::raise(std::uint64_t change, int eventId,
                                  std::vector<NS_DOMAIN::TopoNode_T> nodes) noexcept {
  if (nodes.empty() || !writer_.raise_) {
    return;
  }
  try {
    writer_.raise_(change, eventId, std::move(nodes));
  } catch (...) {
    return;  // the change is made, and whoever asked for it is told so
  }
}

}  // namespace agent
