#include "agent/store/StoreReading.h"

#include <utility>

#include "agent/base/Cancellation.h"

namespace agent {

StoreReading::StoreReading(NetworkStore& store, bool check)
    : store_(store), check_(check), sizes_(checked([this] { return store_.sizes(); })) {
  work_ = std::async(std::launch::async, [this] { work(); });
}

StoreReading::~StoreReading() {
  end(State::kAbandoned);
}

std::optional<Network> StoreReading::next() {
  MutexLock lock(mutex_);
  changed_.wait(lock.native(), [this]() REQUIRES(mutex_) {
    return !pieces_.empty() || state_ != State::kReading;
  });
  if (!pieces_.empty()) {
    Network piece = std::move(pieces_.front());
    pieces_.pop_front();
    changed_.notify_one();
    return piece;
  }
  const bool failed = state_ == State::kFailed;
  lock.unlock();
  if (failed) {
    finish();
  }
  return std::nullopt;
}

void StoreReading::finish() {
  if (work_.valid()) {
    work_.get();
  }
}

template <typename Reading>
auto StoreReading::checked(Reading reading) -> decltype(reading()) {
  try {
    return reading();
  } catch (const Cancelled&) {
    throw;
  } catch (...) {
    if (check_) {
      store_.check();
    }
    throw;
  }
}

void StoreReading::work() {
  try {
    checked([this] { store_.read([this](Network piece) { pass(std::move(piece)); }); });
  } catch (...) {
    end(State::kFailed);
    throw;
  }
  end(State::kComplete);
  if (check_) {
    store_.check();
  }
}

// Puts a piece into the queue. Throws Cancelled when the destructor has begun.
void StoreReading::pass(Network piece) {
  MutexLock lock(mutex_);
  changed_.wait(lock.native(), [this]() REQUIRES(mutex_) {
    return pieces_.size() < kMostPieces || state_ == State::kAbandoned;
  });
  if (state_ == State::kAbandoned) {
    throw Cancelled();
  }
  pieces_.push_back(std::move(piece));
  changed_.notify_one();
}

void StoreReading::end(State state) {
  const MutexLock lock(mutex_);
  state_ = state;
  changed_.notify_one();
}

}  // namespace agent
