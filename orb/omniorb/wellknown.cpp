#include "wellknown.h"

#include <omniORB4/callHandle.h>
#include <omniORB4/minorCode.h>
// The ORB's internal headers do not include each other, so their order is fixed.
// clang-format off
#include <omniORB4/internal/giopStrand.h>
#include <omniORB4/internal/giopStream.h>
#include <omniORB4/internal/GIOP_S.h>
// clang-format on

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <set>
#include <utility>

#include "drain.h"
#include "requests.h"

namespace orb {
namespace {

// The servant in the POA at a fixed key. Forwards requests to the published servant, so that a
// servant can be replaced while other objects of the same POA stay in service.
//
// Thread-safety: any thread; open() and close() by one thread at a time.
class Gate final : public PortableServer::ServantBase {
 public:
  void open(PortableServer::ServantBase* servant, RequestGuard guard) {
    servant->_add_ref();
    const std::lock_guard<std::mutex> lock(mutex_);
    servant_ = servant;
    guard_ = std::move(guard);
    type_ = servant->_mostDerivedRepoId();
  }

  // Rejects new requests and returns when no request is running.
  void close() {
    const PortableServer::ServantBase_var servant = refuse();
    waitUntilIdle();
    forgetGuard();
  }

  _CORBA_Boolean _dispatch(omniCallHandle& call) override {
    RunningRequest running(*this, call.iop_s());
    const std::shared_ptr<void> token = admit(call, running);
    // The operations of the interface first, then the implicit operations of every object.
    return running.servant->_dispatch(call) || running.servant->omniServant::_dispatch(call);
  }

  // The type of the latest servant, which new references to this object contain.
  const char* _mostDerivedRepoId() override {
    const std::lock_guard<std::mutex> lock(mutex_);
    return type_.c_str();
  }

  // Null, so that local calls are dispatched by _dispatch() too.
  void* _ptrToInterface(const char*) override { return nullptr; }

 private:
  // Registers a running request for its lifetime. While a request runs, guard_ does not change.
  struct RunningRequest {
    RunningRequest(Gate& passed, omni::IOP_S* call) : gate(passed), request(call) {
      const std::lock_guard<std::mutex> lock(gate.mutex_);
      gate.checkOpen();
      servant = gate.servant_;
      gate.running_.insert(this);
    }

    ~RunningRequest() {
      const std::lock_guard<std::mutex> lock(gate.mutex_);
      gate.running_.erase(this);
      if (gate.running_.empty()) {
        gate.idle_.notify_all();
      }
    }

    RunningRequest(const RunningRequest&) = delete;
    RunningRequest& operator=(const RunningRequest&) = delete;

    Gate& gate;
    omni::IOP_S* const request;  // null for a local call
    PortableServer::ServantBase* servant = nullptr;
    bool admitted = false;  // guarded by the gate's mutex
  };

  PortableServer::ServantBase* refuse() {
    const std::lock_guard<std::mutex> lock(mutex_);
    return std::exchange(servant_, nullptr);
  }

  void waitUntilIdle() {
    const auto isIdle = [this] { return running_.empty(); };
    {
      const std::lock_guard<std::mutex> lock(mutex_);
      if (isIdle()) {
        return;
      }
    }
    const Drain drain([this](omni::GIOP_S& request) { return waitsForItsClient(request); });
    std::unique_lock<std::mutex> lock(mutex_);
    idle_.wait(lock, isIdle);
  }

  // False while the guard blocks the request.
  bool waitsForItsClient(omni::GIOP_S& request) {
    const std::lock_guard<std::mutex> lock(mutex_);
    return std::any_of(running_.begin(), running_.end(), [&request](const RunningRequest* running) {
      return running->request == &request && running->admitted;
    });
  }

  void forgetGuard() {
    RequestGuard guard;
    const std::lock_guard<std::mutex> lock(mutex_);
    std::swap(guard, guard_);  // destroyed after the lock
  }

  // Rejects the request if the gate was closed while the guard blocked.
  std::shared_ptr<void> admit(omniCallHandle& call, RunningRequest& running) {
    std::shared_ptr<void> token = guard_ ? guard_(requestOf(call)) : nullptr;
    const std::lock_guard<std::mutex> lock(mutex_);
    checkOpen();
    running.admitted = true;
    return token;
  }

  // REQUIRES: mutex_ is locked.
  void checkOpen() const {
    if (servant_ == nullptr) {
      throw CORBA::TRANSIENT(omni::TRANSIENT_POANoResource, CORBA::COMPLETED_NO);
    }
  }

  std::mutex mutex_;
  std::condition_variable idle_;
  PortableServer::ServantBase* servant_ = nullptr;  // guarded by mutex_, null while closed
  std::string type_;                                // guarded by mutex_, constant while open
  RequestGuard
      guard_;  // changes only under mutex_ while no request runs; a request reads it unlocked
  std::set<const RunningRequest*> running_;  // guarded by mutex_
};

// An object in the POA whose object keys are the bare object ids, as a corbaloc needs.
class InsObject final : public WellKnownObject {
 public:
  InsObject(CORBA::ORB_ptr orb, const std::string& key)
      : id_(PortableServer::string_to_ObjectId(key.c_str())), gate_(new Gate) {
    const CORBA::Object_var object = orb->resolve_initial_references("omniINSPOA");
    poa_ = PortableServer::POA::_narrow(object);
    poa_->activate_object_with_id(id_.in(), gate_.in());
    const PortableServer::POAManager_var manager = poa_->the_POAManager();
    manager->activate();
  }

  ~InsObject() override {
    InsObject::retire();
    try {
      poa_->deactivate_object(id_.in());
    } catch (const CORBA::Exception&) {
      // The ORB has ended and has destroyed the POA.
    }
  }

  CORBA::Object_ptr publish(PortableServer::ServantBase* servant, RequestGuard guard) override {
    gate()->open(servant, std::move(guard));
    return poa_->id_to_reference(id_.in());
  }

  void retire() override { gate()->close(); }

 private:
  Gate* gate() { return static_cast<Gate*>(gate_.in()); }

  const PortableServer::ObjectId_var id_;
  const PortableServer::ServantBase_var gate_;
  PortableServer::POA_var poa_;
};

}  // namespace

std::unique_ptr<WellKnownObject> makeWellKnownObject(CORBA::ORB_ptr orb, const std::string& key) {
  return std::make_unique<InsObject>(orb, key);
}

}  // namespace orb
