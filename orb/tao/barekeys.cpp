#include "barekeys.h"

#include <ace/Active_Map_Manager.h>
#include <tao/Acceptor_Registry.h>
#include <tao/MProfile.h>
#include <tao/ORB_Core.h>
#include <tao/ObjectKey_Table.h>
#include <tao/PortableServer/Default_Acceptor_Filter.h>
#include <tao/PortableServer/Object_Adapter.h>
#include <tao/PortableServer/Root_POA.h>
#include <tao/Profile.h>
#include <tao/Stub.h>
#include <tao/TAO_Server_Request.h>
#include <tao/Thread_Lane_Resources.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "connections.h"
#include "messagelimit.h"
#include "outgoingcalls.h"

namespace orb {
namespace {

std::string octetsOf(const TAO::ObjectKey& key) {
  return {reinterpret_cast<const char*>(key.get_buffer()), key.length()};
}

bool isOfAPoa(const TAO::ObjectKey& key) {
  const CORBA::Octet* const prefix = TAO_Root_POA::objectkey_prefix;
  return key.length() >= TAO_Root_POA::TAO_OBJECTKEY_PREFIX_SIZE &&
         std::equal(prefix, prefix + TAO_Root_POA::TAO_OBJECTKEY_PREFIX_SIZE, key.get_buffer());
}

struct KeyFormat : TAO_Root_POA {
  using TAO_Root_POA::non_root_key_char;
  using TAO_Root_POA::system_id_key_char;
  using TAO_Root_POA::transient_key_char;
};

// Whether a key of a POA has the length that the ORB expects. The ORB parses the key without a
// check of its length. All POAs of a server are transient.
bool isComplete(const ObjectKey& key) {
  constexpr std::size_t kKinds = TAO_Root_POA::TAO_OBJECTKEY_PREFIX_SIZE;  // three octets
  constexpr std::size_t kCreationTime = 8;
  std::size_t least = kKinds + 3 + kCreationTime;
  if (key.size() < least || key[kKinds + 2] != KeyFormat::transient_key_char()) {
    return false;
  }
  if (key[kKinds] == KeyFormat::non_root_key_char()) {
    least += TAO_Object_Adapter::transient_poa_name_size();
  }
  least += ACE_Active_Map_Manager_Key::size();  // position in the active object map
  if (key[kKinds + 1] == KeyFormat::system_id_key_char()) {
    least += sizeof(CORBA::ULong);
  }
  return key.size() >= least;
}

TAO::ObjectKey keyOf(const std::string& text) {
  TAO::ObjectKey key;
  key.length(static_cast<CORBA::ULong>(text.size()));
  std::copy(text.begin(), text.end(), key.get_buffer());
  return key;
}

Request requestOf(TAO_ServerRequest& request) {
  Request result;
  result.operation = request.operation();
  if (!request.collocated()) {
    result.peer = currentPeer();
    result.bytes = servedRequest().bytes;
  }
  return result;
}

// The ORB treats arguments that it cannot decode as an error only if errno is set, but does not set
// errno itself.
void expectMalformedArguments() {
  errno = EBADMSG;
}

void dispatchTo(KeyGate& gate, TAO_ServerRequest& request) {
  KeyGate::Pass pass(gate, request.collocated() ? nullptr : servedRequest().connection);
  const std::shared_ptr<void> token = pass.admit([&request] { return requestOf(request); });
  expectMalformedArguments();
  pass.servant()->_dispatch(request, nullptr);
}

}  // namespace

BareKeys::BareKeys(TAO_ORB_Core& core) : core_(core) {}

BareKeys::~BareKeys() = default;

void BareKeys::checkRequests(RequestCheck check) {
  check_.set(std::move(check));
}

void BareKeys::observeRequests(RequestObserver observer) {
  observer_.set(std::move(observer));
}

CORBA::Object_ptr BareKeys::referenceTo(const std::string& key, const char* type) {
  TAO_Acceptor_Registry& acceptors = core_.lane_resources().acceptor_registry();
  TAO_MProfile profiles(0);
  TAO_Default_Acceptor_Filter filter;
  if (profiles.set(static_cast<CORBA::ULong>(acceptors.endpoint_count())) == -1 ||
      filter.fill_profile(keyOf(key), profiles, acceptors.begin(), acceptors.end()) == -1 ||
      filter.encode_endpoints(profiles) == -1) {
    throw CORBA::INTERNAL(0, CORBA::COMPLETED_NO);
  }
  return core_.create_object(core_.create_stub(type, profiles));
}

// The ORB asks adapters in ascending order of priority; the POAs have priority 0.
int BareKeys::priority() const {
  return -1;
}

int BareKeys::dispatch(TAO::ObjectKey& key, TAO_ServerRequest& request,
                       CORBA::Object_out /*forward*/) {
  const ObjectKey target = octetsOf(key);
  lastCall().reading = false;
  if (!request.collocated()) {
    if (std::exchange(lastCall().tooLarge, false) || servedRequest().refused) {
      throw CORBA::MARSHAL(kMessageTooLarge, CORBA::COMPLETED_NO);
    }
    if (const std::shared_ptr<Connection>& connection = servedRequest().connection) {
      connection->beginRequest(target);
    }
    if (!request.deferred_reply()) {  // the ORB asks with a deferred reply for a LocateRequest
      check_.with([&](const RequestCheck& check) { check(target, requestOf(request)); });
    }
    observer_.with([&target](const RequestObserver& observe) { observe(target); });
  }
  const std::shared_ptr<KeyGate> gate = gates_->at(target);
  if (!gate) {
    if (isOfAPoa(key) && !isComplete(target)) {
      throw CORBA::OBJECT_NOT_EXIST(CORBA::OMGVMCID | 2, CORBA::COMPLETED_NO);  // no POA
    }
    expectMalformedArguments();
    return DS_MISMATCHED_KEY;
  }
  dispatchTo(*gate, request);
  return DS_OK;
}

const char* BareKeys::name() const {
  return "BareKeys";
}

CORBA::Object_ptr BareKeys::root() {
  return CORBA::Object::_nil();
}

// Local calls to a fixed key use the network too, because collocated calls work with POAs only. Nil
// leaves the reference to the POAs.
CORBA::Object_ptr BareKeys::create_collocated_object(TAO_Stub* stub,
                                                     const TAO_MProfile& /*profiles*/) {
  return initialize_collocated_object(stub) == 0 ? new CORBA::Object(stub, false)
                                                 : CORBA::Object::_nil();
}

// Returns 0 if no other adapter has to be asked. The POAs expect one of their keys in every
// profile, but a client can send a reference with other profiles.
CORBA::Long BareKeys::initialize_collocated_object(TAO_Stub* stub) {
  const TAO_MProfile& profiles = stub->base_profiles();
  for (TAO_PHandle i = 0; i < profiles.profile_count(); ++i) {
    const TAO::ObjectKey_var key = profiles.get_profile(i)->_key();  // null in unknown profiles
    if (key.ptr() == nullptr || !isOfAPoa(key.in())) {
      stub->is_collocated(false);
      return 0;
    }
  }
  return 1;
}

void Gates::add(const std::string& key, std::shared_ptr<KeyGate> gate) {
  const WriteLock lock(mutex_);
  gates_.emplace(key, std::move(gate));
}

void Gates::remove(const std::string& key) {
  const WriteLock lock(mutex_);
  gates_.erase(key);
}

std::shared_ptr<KeyGate> Gates::at(const std::string& key) const {
  const ReadLock lock(mutex_);
  const auto found = gates_.find(key);
  return found == gates_.end() ? nullptr : found->second;
}

void closeGate(KeyGate& gate) {
  gate.close([&gate] {
    gate.forEachRunning([](const std::shared_ptr<Connection>& connection) {
      if (connection) {
        connection->beginDrain();
      }
    });
    return nullptr;
  });
}

}  // namespace orb
