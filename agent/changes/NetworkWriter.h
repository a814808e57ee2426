// Commits every change of the network, one at a time: the store first, then the model, then the
// event. So store and model agree, and events are raised in the order of the commits.

#ifndef AGENT_CHANGES_NETWORKWRITER_H
#define AGENT_CHANGES_NETWORKWRITER_H

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "agent/base/Cancellation.h"
#include "agent/model/NetworkModel.h"
#include "agent/network/NetworkChange.h"
#include "agent/store/NetworkStore.h"
#include "agent/store/StoreCopy.h"
#include "platform/domain/DomainRecords.h"
#include "sync/Mutex.h"

namespace agent {

// Thread-safety: any thread. Changes wait for each other and for the disk; readers of the model
// wait for neither. Ownership: borrows the store and the model, which outlive the writer; nothing
// else uses the store or changes the model. Errors: StoreError and Cancelled, thrown.
class NetworkWriter {
 public:
  // Receives the events of each change after the commit, when the model shows the change, and
  // before the next change begins. change is the number of the change (NetworkStore::lastChange).
  // The function queues the event and returns; it does not call the writer or the services that use
  // the writer. Exceptions are ignored, because the change is committed already.
  using RaiseEvent = std::function<void(std::uint64_t change, int eventId,
                                        std::vector<NS_DOMAIN::TopoNode_T> nodes)>;

  // raise may be empty.
  NetworkWriter(NetworkStore& store, NetworkModel& model, RaiseEvent raise = {});
  NetworkWriter(const NetworkWriter&) = delete;
  NetworkWriter& operator=(const NetworkWriter&) = delete;

  const NetworkModel& model() const { return model_; }

  // The owner and the additional information of an object, in the store. Waits for the change in
  // progress, but not for a pause.
  std::pair<std::string, InfoPairs> attributesOf(const ObjectKey& key);

  // The stored network with its objectAttributes. Waits for the change in progress, but not for a
  // pause; changes wait for the call.
  Network storedNetwork();

  // The size of the stored data in bytes. Waits as storedNetwork().
  std::uint64_t storedBytes();

  // Begins, continues and ends a copy of the store. Each call waits for the change in progress, but
  // not for a pause. Changes may be committed between the calls. continueCopy returns true when the
  // copy is complete.
  std::unique_ptr<StoreCopy> beginCopy();
  bool continueCopy(StoreCopy& copy);
  void endCopy(std::unique_ptr<StoreCopy> copy);

  // Failures of the store since the start.
  struct StoreFailures {
    std::uint64_t count = 0;
    // Of the latest commit, when the commit failed; no value after a success.
    std::optional<std::chrono::steady_clock::time_point> commitFailed;
  };

  // Waits for nothing.
  StoreFailures storeFailures() const;

  // Blocks new changes until the Pause is destroyed. The constructor waits until the change in
  // progress has ended and has raised its event. A change that takes longer than atMost continues
  // and raises its event during the pause. Waiting changes do not delay a pause. Several pauses may
  // exist at the same time. Thread-safety: any thread may destroy a pause. Ownership: borrows the
  // writer. Errors: none.
  class Pause {
   public:
    Pause(NetworkWriter& writer, std::chrono::milliseconds atMost);
    ~Pause();
    Pause(const Pause&) = delete;
    Pause& operator=(const Pause&) = delete;

   private:
    NetworkWriter& writer_;
  };

  // The exclusive right to make one change, from the constructor to the destructor. The constructor
  // waits for the change in progress and for all pauses. Thread-safety: one thread. Ownership:
  // borrows the writer. Errors: commit() throws StoreError and Cancelled. REQUIRES: the thread has
  // no other Change and no Pause.
  class Change {
   public:
    explicit Change(NetworkWriter& writer);
    Change(const Change&) = delete;
    Change& operator=(const Change&) = delete;

    // For checks and for the preparation of the change.
    NetworkStore& store();
    NetworkModel& model() { return writer_.model_; }

    // Commits the change to the store, applies the change to the model, and raises the event of the
    // change unless the change affects no node. A renaming of no records is ignored. After a
    // failure nothing is changed.
    void commit(PreparedChange change, const Cancellation& cancellation = Cancellation::none());

   private:
    // Waits until there is no other turn and no pause.
    class Turn {
     public:
      explicit Turn(NetworkWriter& writer);
      ~Turn();
      Turn(const Turn&) = delete;
      Turn& operator=(const Turn&) = delete;

     private:
      NetworkWriter& writer_;
    };

    void raise(std::uint64_t number, NetworkChange change) noexcept;

    NetworkWriter& writer_;
    const Turn turn_;
    const MutexLock lock_;
  };

 private:
  // Calls the function, and counts a StoreError, which passes.
  template <typename Call>
  auto counted(const Call& call);
  std::uint64_t commitToStore(const NetworkChange& change, const Cancellation& cancellation)
      REQUIRES(mutex_);

  mutable Mutex failuresMutex_;  // locked last
  StoreFailures failures_ GUARDED_BY(failuresMutex_);

  Mutex gateMutex_;
  std::condition_variable gateMoved_;
  bool changing_ GUARDED_BY(gateMutex_) = false;
  std::size_t pauses_ GUARDED_BY(gateMutex_) = 0;

  Mutex mutex_;  // of the store; locked after gateMutex_ is released
  NetworkStore& store_ GUARDED_BY(mutex_);
  NetworkModel& model_;  // changed with mutex_ held, read by any thread
  const RaiseEvent raise_;
};

}  // namespace agent

#endif
