#include "wellknown.h"

#include <omniORB4/callHandle.h>
#include <omniORB4/minorCode.h>
// The ORB's internal headers do not include each other, so their order is fixed.
// clang-format off
#include <omniORB4/internal/giopStrand.h>
#include <omniORB4/internal/giopStream.h>
#include <omniORB4/internal/GIOP_S.h>
// clang-format on

#include <string>
#include <utility>

#include "../gate.h"
#include "drain.h"
#include "requests.h"
#include "sync/Mutex.h"

namespace orb {
namespace {

// The servant in the POA at a fixed key. Forwards requests to the published servant.
//
// Thread-safety: any thread; open() and close() by one thread at a time.
class ForwardingServant final : public PortableServer::ServantBase {
 public:
  void open(PortableServer::ServantBase* servant, RequestGuard guard) {
    {
      const MutexLock lock(mutex_);
      type_ = servant->_mostDerivedRepoId();
    }
    gate_.open(servant, std::move(guard));
  }

  // Rejects new requests and returns when no request is running.
  void close() {
    gate_.close([this] {
      return Drain([this](omni::GIOP_S& request) {
        return gate_.anyAdmitted([&](const omni::IOP_S* running) { return running == &request; });
      });
    });
  }

  _CORBA_Boolean _dispatch(omniCallHandle& call) override {
    RequestGate::Pass pass(gate_, call.iop_s());
    const std::shared_ptr<void> token = pass.admit([&call] { return requestOf(call); });
    // The operations of the interface first, then the implicit operations of every object.
    return pass.servant()->_dispatch(call) || pass.servant()->omniServant::_dispatch(call);
  }

  // The type of the latest servant, which new references to this object contain. The text is valid
  // until the next open().
  const char* _mostDerivedRepoId() override {
    const MutexLock lock(mutex_);
    return type_.c_str();
  }

  // Null, so that local calls are dispatched by _dispatch() too.
  void* _ptrToInterface(const char*) override { return nullptr; }

 private:
  using RequestGate = Gate<omni::IOP_S*>;  // null: a local call

  RequestGate gate_;
  Mutex mutex_;
  std::string type_ GUARDED_BY(mutex_);
};

// An object in the POA whose object keys are the bare object ids, as a corbaloc needs.
class InsObject final : public WellKnownObject {
 public:
  InsObject(CORBA::ORB_ptr orb, const std::string& key)
      : id_(PortableServer::string_to_ObjectId(key.c_str())), servant_(new ForwardingServant) {
    const CORBA::Object_var object = orb->resolve_initial_references("omniINSPOA");
    poa_ = PortableServer::POA::_narrow(object);
    poa_->activate_object_with_id(id_.in(), servant_.in());
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
    forwarding()->open(servant, std::move(guard));
    return poa_->id_to_reference(id_.in());
  }

  void retire() override { forwarding()->close(); }

 private:
  ForwardingServant* forwarding() { return static_cast<ForwardingServant*>(servant_.in()); }

  const PortableServer::ObjectId_var id_;
  const PortableServer::ServantBase_var servant_;
  PortableServer::POA_var poa_;
};

}  // namespace

std::unique_ptr<WellKnownObject> makeWellKnownObject(CORBA::ORB_ptr orb, const std::string& key) {
  return std::make_unique<InsObject>(orb, key);
}

}  // namespace orb
