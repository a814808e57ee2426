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

// The network of a store in pieces, which a thread reads. The thread then checks the store for
// damage. The thread waits while kMostPieces pieces are in the queue.
//
// Thread-safety: one thread takes the pieces. Ownership: borrows the store, which no other code may
// use until finish() or the destructor returns. The destructor ends the thread. Errors: next() and
// sizes() throw StoreError when the store cannot be read, finish() also for other damage.
class StoreReading final : public NetworkSource {
 public:
  static constexpr std::size_t kMostPieces = 128;

  // Throws StoreError, and std::system_error when no thread can start. With `check`, a failed
  // reading is followed by the check of the store, whose StoreError has a more precise reason.
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
