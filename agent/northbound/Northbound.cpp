#include "agent/northbound/Northbound.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "agent/base/Log.h"

namespace agent {
namespace {

// The interval of the housekeeper: an idle iterator outlives its timeout by at most one interval,
// and freed memory is returned at most one interval later than IdleTrim requires.
constexpr std::chrono::milliseconds kLongestInterval{250};
constexpr std::chrono::milliseconds kShortestInterval{10};

std::chrono::milliseconds intervalFor(const IteratorLimits& limits) {
  return std::clamp(limits.idleTimeout / 4, kShortestInterval, kLongestInterval);
}

}  // namespace

Northbound::Northbound(orb::Server& server, std::string emsName, bool testSwitch,
                       const IteratorLimits& limits, ViewSetup views)
    : server_(server),
      emsName_(std::move(emsName)),
      testSwitch_(testSwitch),
      views_(std::move(views)),
      admission_(
          views_.limits, [this](std::size_t bytes) { return allows(bytes); },
          std::chrono::steady_clock::now),
      information_(
          views_.limits, [this](std::size_t bytes) { return allows(bytes); },
          std::chrono::steady_clock::now, "additional information"),
      iterators_(server.rootPoa(), limits, std::chrono::steady_clock::now),
      guard_{admission_, information_, iterators_,
             [this](ViewKind kind) {
               return views_.sizeOf ? views_.sizeOf(kind, Northbound::testSwitch()) : ViewSize();
             }},
      managers_(server, &guard_),
      refusedIterators_(std::chrono::steady_clock::now),
      interval_(intervalFor(limits)) {
  server_.observeRequests([this](const orb::ObjectKey& key) { iterators_.touch(key); });
  housekeeper_ = std::thread([this] { housekeep(); });
}

Northbound::~Northbound() {
  server_.observeRequests(nullptr);
  {
    const MutexLock lock(mutex_);
    stopping_ = true;
  }
  stop_.notify_one();
  housekeeper_.join();
}

void Northbound::housekeep() {
  MutexLock lock(mutex_);
  while (
      !stop_.wait_for(lock.native(), interval_, [this]() REQUIRES(mutex_) { return stopping_; })) {
    lock.unlock();
    reclaimIterators();
    returnIdleMemory();
    lock.lock();
  }
}

// An exception, such as std::bad_alloc, is dropped: the next interval tries again.
void Northbound::reclaimIterators() noexcept {
  try {
    const std::size_t reclaimed = iterators_.reclaimIdle();
    if (reclaimed > 0) {
      log(kLogEvents, "reclaimed " + std::to_string(reclaimed) + " idle iterators, " +
                          std::to_string(iterators_.size()) + " live");
    }
  } catch (...) {
    return;
  }
}

void Northbound::returnIdleMemory() {
  const ViewAdmission::Load load = admission_.load();
  const bool isDue = trim_.isDue(
      {load.inProgress > 0, load.ended + iterators_.ended(), server_.openConnections() > 0},
      std::chrono::steady_clock::now());
  if (isDue && views_.returnFreedMemory) {
    views_.returnFreedMemory();
  }
}

// A copy of all records in iterators must fit, too, because the copy of a batch has no admission.
bool Northbound::allows(std::size_t bytes) {
  return !views_.allows || views_.allows(bytes + iterators_.bytes());
}

FailureCode Northbound::addIterator(PortableServer::ServantBase* servant) {
  const std::size_t bytes = iteratorBytes(servant);
  const FailureCode code = iterators_.add(servant, bytes);
  if (code == kTooManyIterators || code == kTooMuch) {
    refusedIterators_.refused("an iterator of " + std::to_string(bytes) +
                              " bytes is refused: " + std::to_string(iterators_.size()) +
                              " iterators hold " + std::to_string(iterators_.bytes()) + " bytes");
  }
  return code;
}

void Northbound::open() {
  admission_.open();
  information_.open();
  iterators_.open();
}

// Waiting views end first. The managers retire before the iterators, because requests to a manager
// create iterators.
void Northbound::retire() {
  admission_.close();
  information_.close();
  managers_.retire();
  iterators_.retire();
}

}  // namespace agent
