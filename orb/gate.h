// Access of requests to a servant that can be replaced.

#ifndef ORB_GATE_H
#define ORB_GATE_H

#include <condition_variable>
#include <list>
#include <memory>
#include <utility>

#include "orb/orb.h"
#include "sync/Mutex.h"

namespace orb {

// Admits requests to the published servant and counts the running ones, so that the servant can be
// withdrawn while other objects of the ORB stay in service. Source identifies a running request for
// the layer of an ORB, such as by its connection; a default-constructed Source means a local call.
//
// Thread-safety: any thread; open() and close() by one thread at a time.
// Ownership: holds a reference to the servant while open. A Pass borrows its gate.
// Errors: CORBA::TRANSIENT for a request while the gate is closed.
template <typename Source>
class Gate {
  struct Running {
    Source source;
    bool admitted = false;  // the guard has run
  };
  using RunningList = std::list<Running>;

 public:
  Gate() = default;
  Gate(const Gate&) = delete;
  Gate& operator=(const Gate&) = delete;

  // Counts a request as running for the lifetime of the object. Thread-safety: one thread. Borrows
  // the gate. The constructor throws CORBA::TRANSIENT while the gate is closed, and std::bad_alloc.
  class Pass {
   public:
    Pass(Gate& gate, Source source) : gate_(gate) {
      RunningList entry;
      entry.push_back({std::move(source)});
      const MutexLock lock(gate_.mutex_);
      gate_.checkOpen();
      servant_ = gate_.servant_;
      self_ = entry.begin();
      gate_.running_.splice(gate_.running_.end(), entry);
    }

    ~Pass() {
      const MutexLock lock(gate_.mutex_);
      gate_.running_.erase(self_);
      if (gate_.running_.empty()) {
        gate_.idle_.notify_all();
      }
    }

    Pass(const Pass&) = delete;
    Pass& operator=(const Pass&) = delete;

    // Runs the guard and returns its token. `describe` makes the Request for the guard. Rejects the
    // request if the gate was closed while the guard blocked. Exceptions of the guard pass.
    template <typename Describe>
    std::shared_ptr<void> admit(Describe describe) {
      std::shared_ptr<void> token = gate_.guard_ ? gate_.guard_(describe()) : nullptr;
      const MutexLock lock(gate_.mutex_);
      gate_.checkOpen();
      self_->admitted = true;
      return token;
    }

    // Borrowed, valid for the lifetime of the object.
    PortableServer::ServantBase* servant() const { return servant_; }

   private:
    Gate& gate_;
    PortableServer::ServantBase* servant_ = nullptr;
    typename RunningList::iterator self_;
  };

  // REQUIRES: the gate is closed.
  void open(PortableServer::ServantBase* servant, RequestGuard guard) {
    servant->_add_ref();
    const MutexLock lock(mutex_);
    servant_ = servant;
    guard_ = std::move(guard);
  }

  // Rejects new requests, and returns when no request is running. If requests are running,
  // `unblock` is called once to end their waits for clients; its result lives until the requests
  // have ended.
  template <typename Unblock>
  void close(Unblock unblock) {
    const PortableServer::ServantBase_var servant = withdraw();
    if (!isIdle()) {
      [[maybe_unused]] const auto unblocking = unblock();
      MutexLock lock(mutex_);
      idle_.wait(lock.native(), [this]() REQUIRES(mutex_) { return running_.empty(); });
    }
    // Destroyed without the mutex, because the destructor may call back.
    const RequestGuard guard = std::exchange(guard_, nullptr);
  }

  // Whether `matches` is true for the source of a running request. `matches` is called with the
  // mutex locked, and for admitted requests only: a request that its guard blocks is left out.
  template <typename Matches>
  bool anyAdmitted(Matches matches) const {
    const MutexLock lock(mutex_);
    for (const Running& running : running_) {
      if (running.admitted && matches(running.source)) {
        return true;
      }
    }
    return false;
  }

  // Calls `act` with the source of each running request, with the mutex locked.
  template <typename Act>
  void forEachRunning(Act act) const {
    const MutexLock lock(mutex_);
    for (const Running& running : running_) {
      act(running.source);
    }
  }

 private:
  PortableServer::ServantBase* withdraw() {
    const MutexLock lock(mutex_);
    return std::exchange(servant_, nullptr);
  }

  bool isIdle() const {
    const MutexLock lock(mutex_);
    return running_.empty();
  }

  void checkOpen() const REQUIRES(mutex_) {
    if (servant_ == nullptr) {
      throw CORBA::TRANSIENT(CORBA::OMGVMCID | 1, CORBA::COMPLETED_NO);  // requests are discarded
    }
  }

  mutable Mutex mutex_;
  std::condition_variable idle_;
  PortableServer::ServantBase* servant_ GUARDED_BY(mutex_) = nullptr;  // null while closed
  RunningList running_ GUARDED_BY(mutex_);
  RequestGuard guard_;  // written while no request is running; requests read it without the mutex
};

}  // namespace orb

#endif
