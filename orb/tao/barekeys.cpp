#include "barekeys.h"

#include <netdb.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <tao/Acceptor_Registry.h>
#include <tao/MProfile.h>
#include <tao/ORB_Core.h>
#include <tao/ObjectKey_Table.h>
#include <tao/PortableServer/Default_Acceptor_Filter.h>
#include <tao/PortableServer/Root_POA.h>
#include <tao/Profile.h>
#include <tao/Stub.h>
#include <tao/TAO_Server_Request.h>
#include <tao/Thread_Lane_Resources.h>
#include <tao/Transport.h>

#include <algorithm>
#include <utility>

#include "calls.h"
#include "messages.h"

namespace orb {
namespace {

std::string textOf(const TAO::ObjectKey& key) {
  return {reinterpret_cast<const char*>(key.get_buffer()), key.length()};
}

bool isOfAPoa(const TAO::ObjectKey& key) {
  const CORBA::Octet* const prefix = TAO_Root_POA::objectkey_prefix;
  return key.length() >= TAO_Root_POA::TAO_OBJECTKEY_PREFIX_SIZE &&
         std::equal(prefix, prefix + TAO_Root_POA::TAO_OBJECTKEY_PREFIX_SIZE, key.get_buffer());
}

TAO::ObjectKey keyOf(const std::string& text) {
  TAO::ObjectKey key;
  key.length(static_cast<CORBA::ULong>(text.size()));
  std::copy(text.begin(), text.end(), key.get_buffer());
  return key;
}

// Each connection has a thread of its own, so that a client that reads nothing holds up nobody
// else; this ends its connection in the end. Not an error where the kernel has no such option.
void limitUnread(TAO_Transport& transport, std::chrono::milliseconds longest) {
  thread_local std::size_t limited = 0;
  if (limited == transport.id()) {
    return;
  }
  limited = transport.id();
  const auto milliseconds = static_cast<unsigned int>(longest.count());
  const ACE_HANDLE handle = transport.event_handler_i()->get_handle();
  static_cast<void>(
      setsockopt(handle, IPPROTO_TCP, TCP_USER_TIMEOUT, &milliseconds, sizeof milliseconds));
}

// The client of the connection that the thread serves; a connection's thread serves nothing else.
thread_local std::string threadsPeer;

std::string peerOf(TAO_Transport& transport) {
  sockaddr_storage address{};
  socklen_t size = sizeof address;
  auto* const general = reinterpret_cast<sockaddr*>(&address);
  char host[NI_MAXHOST] = "";
  if (getpeername(transport.event_handler_i()->get_handle(), general, &size) == 0) {
    static_cast<void>(getnameinfo(general, size, host, sizeof host, nullptr, 0, NI_NUMERICHOST));
  }
  return host;
}

Request requestOf(TAO_ServerRequest& request) {
  Request result;
  result.operation = request.operation();
  if (!request.collocated()) {
    result.peer = threadsPeer;
    result.bytes = request.incoming()->length();
  }
  return result;
}

}  // namespace

std::string currentPeer() {
  return threadsPeer;
}

BareKeys::BareKeys(TAO_ORB_Core& core, std::chrono::milliseconds serveTimeout)
    : core_(core), serveTimeout_(serveTimeout) {}

BareKeys::~BareKeys() = default;

void BareKeys::observeRequests(RequestObserver observer) {
  const std::unique_lock<std::shared_mutex> lock(observerMutex_);
  observer_ = std::move(observer);
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

// The ORB asks adapters of lower priority first; its POAs have 0.
int BareKeys::priority() const {
  return -1;
}

int BareKeys::dispatch(TAO::ObjectKey& key, TAO_ServerRequest& request,
                       CORBA::Object_out /*forward*/) {
  const ObjectKey target = textOf(key);
  lastCall().reading = false;
  if (!request.collocated()) {
    if (std::exchange(lastCall().tooLarge, false)) {
      throw CORBA::MARSHAL(kMessageTooLarge, CORBA::COMPLETED_NO);
    }
    if (request.transport() != nullptr) {
      threadsPeer = peerOf(*request.transport());
      limitUnread(*request.transport(), serveTimeout_);
    }
    const std::shared_lock<std::shared_mutex> lock(observerMutex_);
    if (observer_) {
      observer_(target);
    }
  }
  const std::shared_ptr<Gate> gate = gates_->at(target);
  if (!gate) {
    return DS_MISMATCHED_KEY;
  }
  gate->dispatch(request);
  return DS_OK;
}

const char* BareKeys::name() const {
  return "BareKeys";
}

CORBA::Object_ptr BareKeys::root() {
  return CORBA::Object::_nil();
}

// Calls to a bare key go through the network from within the process too: the ORB's shortcut knows
// POAs alone. Nil leaves the reference to them.
CORBA::Object_ptr BareKeys::create_collocated_object(TAO_Stub* stub,
                                                     const TAO_MProfile& /*of it*/) {
  return initialize_collocated_object(stub) == 0 ? new CORBA::Object(stub, false)
                                                 : CORBA::Object::_nil();
}

// 0 says that nobody else need be asked. The POAs expect a key of theirs in every profile, which
// whoever sends a reference need not have put there.
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

void Gates::add(const std::string& key, std::shared_ptr<Gate> gate) {
  const std::unique_lock<std::shared_mutex> lock(mutex_);
  gates_.emplace(key, std::move(gate));
}

void Gates::remove(const std::string& key) {
  const std::unique_lock<std::shared_mutex> lock(mutex_);
  gates_.erase(key);
}

std::shared_ptr<Gate> Gates::at(const std::string& key) const {
  const std::shared_lock<std::shared_mutex> lock(mutex_);
  const auto found = gates_.find(key);
  return found == gates_.end() ? nullptr : found->second;
}

// One request on its way.
class Gate::Passage {
 public:
  explicit Passage(Gate& passed) : gate_(passed) {
    const std::lock_guard<std::mutex> lock(gate_.mutex_);
    gate_.checkOpen();
    servant = gate_.servant_;
    ++gate_.running_;
  }

  ~Passage() {
    const std::lock_guard<std::mutex> lock(gate_.mutex_);
    if (--gate_.running_ == 0) {
      gate_.idle_.notify_all();
    }
  }

  Passage(const Passage&) = delete;
  Passage& operator=(const Passage&) = delete;

  PortableServer::ServantBase* servant = nullptr;

 private:
  Gate& gate_;
};

void Gate::open(PortableServer::ServantBase* servant, RequestGuard guard) {
  servant->_add_ref();
  const std::lock_guard<std::mutex> lock(mutex_);
  servant_ = servant;
  guard_ = std::move(guard);
}

void Gate::close() {
  std::unique_lock<std::mutex> lock(mutex_);
  PortableServer::ServantBase* const servant = std::exchange(servant_, nullptr);
  idle_.wait(lock, [this] { return running_ == 0; });
  const RequestGuard guard = std::exchange(guard_, nullptr);
  lock.unlock();  // servant and guard are dropped without it
  if (servant != nullptr) {
    servant->_remove_ref();
  }
}

void Gate::checkOpen() const {
  if (servant_ == nullptr) {
    throw CORBA::TRANSIENT(CORBA::OMGVMCID | 1, CORBA::COMPLETED_NO);  // requests are discarded
  }
}

std::shared_ptr<void> Gate::admit(TAO_ServerRequest& request) {
  if (!guard_) {
    return nullptr;
  }
  std::shared_ptr<void> token = guard_(requestOf(request));
  const std::lock_guard<std::mutex> lock(mutex_);
  checkOpen();
  return token;
}

void Gate::dispatch(TAO_ServerRequest& request) {
  const Passage passage(*this);
  const std::shared_ptr<void> token = admit(request);
  passage.servant->_dispatch(request, nullptr);
}

}  // namespace orb
