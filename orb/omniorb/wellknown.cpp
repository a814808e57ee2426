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

// Stands at a key for the servant that is published there, so that one servant can come and go
// while the others of the same POA serve on.
class Gate final : public PortableServer::ServantBase {
 public:
  void open(PortableServer::ServantBase* servant, RequestGuard guard) {
    servant->_add_ref();
    const std::lock_guard<std::mutex> lock(mutex_);
    servant_ = servant;
    guard_ = std::move(guard);
    type_ = servant->_mostDerivedRepoId();
  }

  // Returns when no request is running.
  void close() {
    const PortableServer::ServantBase_var servant = refuse();
    waitUntilIdle();
    forgetGuard();
  }

  _CORBA_Boolean _dispatch(omniCallHandle& call) override {
    Passage passage(*this, call.iop_s());
    const std::shared_ptr<void> token = admit(call, passage);
    // First what its interface has, then what every object has.
    return passage.servant->_dispatch(call) || passage.servant->omniServant::_dispatch(call);
  }

  // Of the servant that was there last: references that are made of this object carry it.
  const char* _mostDerivedRepoId() override {
    const std::lock_guard<std::mutex> lock(mutex_);
    return type_.c_str();
  }

  // Calls from within the process come through here too.
  void* _ptrToInterface(const char*) override { return nullptr; }

 private:
  // Counts as running from here on. The guard changes only while nothing is running.
  struct Passage {
    Passage(Gate& passed, omni::IOP_S* call) : gate(passed), request(call) {
      const std::lock_guard<std::mutex> lock(gate.mutex_);
      gate.checkOpen();
      servant = gate.servant_;
      gate.running_.insert(this);
    }

    ~Passage() {
      const std::lock_guard<std::mutex> lock(gate.mutex_);
      gate.running_.erase(this);
      if (gate.running_.empty()) {
        gate.idle_.notify_all();
      }
    }

    Passage(const Passage&) = delete;
    Passage& operator=(const Passage&) = delete;

    Gate& gate;
    omni::IOP_S* const request;  // null for a call from within the process
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

  // False while the guard holds up the request.
  bool waitsForItsClient(omni::GIOP_S& request) {
    const std::lock_guard<std::mutex> lock(mutex_);
    return std::any_of(running_.begin(), running_.end(), [&request](const Passage* passage) {
      return passage->request == &request && passage->admitted;
    });
  }

  void forgetGuard() {
    RequestGuard guard;
    const std::lock_guard<std::mutex> lock(mutex_);
    std::swap(guard, guard_);  // destroyed after the lock
  }

  // A gate that was closed while the guard made the request wait does not let it through.
  std::shared_ptr<void> admit(omniCallHandle& call, Passage& passage) {
    std::shared_ptr<void> token = guard_ ? guard_(requestOf(call)) : nullptr;
    const std::lock_guard<std::mutex> lock(mutex_);
    checkOpen();
    passage.admitted = true;
    return token;
  }

  // REQUIRES: mutex_ is held.
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
      guard_;  // changed under mutex_ while nothing is running, so that a request may read it
  std::set<const Passage*> running_;  // guarded by mutex_
};

// In the POA whose object keys are the bare object ids, as corbaloc references have them.
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
      // The ORB is going down already and has forgotten the object with its POA.
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
