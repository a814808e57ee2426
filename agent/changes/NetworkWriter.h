// Everything that changes the network passes here, one change at a time: the store first, then the
// model, then the event. So store and model say the same, and events come in the order of commits.

#ifndef AGENT_CHANGES_NETWORKWRITER_H
#define AGENT_CHANGES_NETWORKWRITER_H

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "agent/base/Cancellation.h"
#include "agent/model/NetworkModel.h"
#include "agent/network/NetworkChange.h"
#include "agent/store/NetworkStore.h"
#include "agent/store/StoreCopy.h"
#include "platform/domain/DomainRecords.h"

namespace agent {

// Borrows store and model, which must outlive it; nobody else uses the store or changes the model
// meanwhile.
// Thread-safety: any thread. Changes wait for each other and for the disk, readers of the model for
// neither.
class NetworkWriter {
 public:
  // Receives the event of each change after the commit, when the model shows the change, and before
  // the next change begins. change is the number of the change (NetworkStore::lastChange). The
  // function queues the event and returns; it does not call the writer or the services that use the
  // writer. Exceptions are ignored, because the change is committed already.
  using RaiseEvent = std::function<void(std::uint64_t change, int eventId,
                                        std::vector<NS_DOMAIN::TopoNode_T> nodes)>;

  // raise may be empty.
  NetworkWriter(NetworkStore& store, NetworkModel& model, RaiseEvent raise = {});
  NetworkWriter(const NetworkWriter&) = delete;
  NetworkWriter& operator=(const NetworkWriter&) = delete;

  const NetworkModel& model() const { return model_; }

  // A copy of the store, its next step, and its end. Each waits for a change that is under way, but
  // for no pause; changes may come between them. continueCopy is true when the copy is complete.
  // The first two throw StoreError.
  std::unique_ptr<StoreCopy> beginCopy();
  bool continueCopy(StoreCopy& copy);
  void endCopy(std::unique_ptr<StoreCopy> copy);

  // Keeps changes waiting for as long as it lives; one that is under way ends first, its event
  // included. A pause goes before changes that wait. Several may live at once, and any thread may
  // end one.
  class Pause {
   public:
    explicit Pause(NetworkWriter& writer);
    ~Pause();
    Pause(const Pause&) = delete;
    Pause& operator=(const Pause&) = delete;

   private:
    NetworkWriter& writer_;
  };

  // The right to make one change, from the moment that no other is under way and nothing pauses
  // them. REQUIRES: the thread has no other change and no pause.
  class Change {
   public:
    explicit Change(NetworkWriter& writer);
    ~Change();
    Change(const Change&) = delete;
    Change& operator=(const Change&) = delete;

    // For checks and for the preparation of the change.
    NetworkStore& store() { return writer_.store_; }
    NetworkModel& model() { return writer_.model_; }

    // Commits the change to the store, applies the change to the model, and raises the event of the
    // change unless the change affects no node. A renaming of no records is ignored. On failure
    // nothing is changed: throws StoreError and Cancelled.
    void commit(PreparedChange change, const Cancellation& cancellation = Cancellation::none());

   private:
    void raise(std::uint64_t number, NetworkChange change) noexcept;

    NetworkWriter& writer_;
    std::unique_lock<std::mutex> lock_;
  };

 private:
  void enter();
  void leave();
  void addPause();
  void endPause();

  NetworkStore& store_;  // guarded by mutex_
  NetworkModel& model_;  // changed under mutex_
  const RaiseEvent raise_;

  std::mutex gateMutex_;
  std::condition_variable gateMoved_;
  bool changing_ = false;   // guarded by gateMutex_
  std::size_t pauses_ = 0;  // guarded by gateMutex_

  std::mutex mutex_;  // held by the change that is under way; taken within the gate
};

}  // namespace agent

#endif
