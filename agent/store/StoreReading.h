// Reads a store on another thread.

#ifndef AGENT_STORE_STOREREADING_H
#define AGENT_STORE_STOREREADING_H

#include <condition_variable>
#include <deque>
#include <future>
#include <optional>

#include "agent/network/NetworkSource.h"
#include "agent/store/NetworkStore.h"
#include "sync/Mutex.h"

namespace agent {

// The network of a store, while a thread reads the store and then checks it for damage. The thread
// waits while kMostPieces pieces are not taken.
//
// Thread-safety: one thread takes the pieces. Ownership: borrows the store, which nobody else may
// use until finish() or the destructor returns. The destructor ends the thread. Errors: next() and
// sizes() throw StoreError when the store cannot be read, finish() also for other damage.
class StoreReading final : public NetworkSource {
 public:
  static constexpr std::size_t kMostPieces = 128;

  // Throws StoreError, and std::system_error when no thread can start. With `check`, a store that
  // cannot be read is reported by its check, whose reason is more precise.
  StoreReading(NetworkStore& store, bool check);
  ~StoreReading() override;

  NetworkSizes sizes() const override { return sizes_; }
  std::optional<Network> next() override;
  void finish() override;

 private:
  enum class State { kReading, kComplete, kFailed, kAbandoned };

  template <typename Reading>
  auto checked(Reading reading) -> decltype(reading());
  void work();
  void pass(Network piece);
  void end(State state);

  NetworkStore& store_;
  const bool check_;
  const NetworkSizes sizes_;
  Mutex mutex_;
  std::condition_variable changed_;
  std::deque<Network> pieces_ GUARDED_BY(mutex_);
  State state_ GUARDED_BY(mutex_) = State::kReading;
  std::future<void> work_;  // its destructor waits for the thread
};

}  // namespace agent

#endif
