#include "orb/orb.h"

#include <omniORB4/minorCode.h>
#include <omniORB4/omniIOR.h>
#include <omniORB4/omniInterceptors.h>
#include <omniORB4/omniORB.h>
// The ORB's internal headers do not include each other, so their order is fixed.
// clang-format off
#include <omniORB4/internal/giopStrand.h>
#include <omniORB4/internal/giopStream.h>
#include <omniORB4/internal/giopStreamImpl.h>
#include <omniORB4/internal/GIOP_S.h>
// clang-format on

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <shared_mutex>
#include <utility>
#include <vector>

namespace orb {
namespace {

// The ORB's log function is a plain function without context, so its receiver is of the process.
std::mutex logMutex;
LogFunction logReceiver;  // guarded by logMutex

void forwardLog(const char* message) {
  std::string line = message;
  while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) {
    line.pop_back();
  }
  const std::lock_guard<std::mutex> lock(logMutex);
  if (logReceiver) {
    logReceiver(line);
  }
}

void setLogReceiver(LogFunction log) {
  const std::lock_guard<std::mutex> lock(logMutex);
  logReceiver = std::move(log);
}

// The ORB takes its settings as an array of name and value, ended by a null pair.
CORBA::ORB_ptr initWithSettings(const std::vector<std::pair<std::string, std::string>>& settings) {
  const auto table = std::make_unique<const char*[][2]>(settings.size() + 1);
  for (std::size_t i = 0; i < settings.size(); ++i) {
    table[i][0] = settings[i].first.c_str();
    table[i][1] = settings[i].second.c_str();
  }
  omniORB::setLogFunction(forwardLog);
  int argc = 0;
  char* argv[] = {nullptr};
  return CORBA::ORB_init(argc, argv, "omniORB4", table.get());
}

CORBA::ORB_ptr initOrb(const Options& options, const std::string& listenAt) {
  const std::string maxMessage = std::to_string(options.maxMessageBytes);
  // For connecting too, as long as the ORB has no time-out of its own for that.
  const std::string callTimeout = std::to_string(options.callTimeout.count());
  const std::string serveTimeout = std::to_string(options.serveTimeout.count());
  std::vector<std::pair<std::string, std::string>> settings = {
      {"giopMaxMsgSize", maxMessage},
      {"clientCallTimeOutPeriod", callTimeout},
      {"serverCallTimeOutPeriod", serveTimeout},
      // Calls to one peer do not wait for each other: of two consumers in one process one may hang.
      {"maxGIOPConnectionPerServer", "100"},
      {"traceTime", "0"},      // whoever receives the log knows the time
      {"traceThreadId", "0"},  // and the thread

      {"nativeCharCodeSet", "UTF-8"},
      // Towards a peer that names none, as the object of a corbaloc does.
      {"defaultCharCodeSet", "UTF-8"},
      // A client listens too, but only if something of it is ever served.
      {"endPoint", "giop:tcp:" + (listenAt.empty() ? std::string("127.0.0.1:") : listenAt)},
  };
  return initWithSettings(settings);
}

class RunningOrb {
 public:
  RunningOrb(const Options& options, const std::string& listenAt)
      : orb_(initOrb(options, listenAt)) {}

  ~RunningOrb() {
    orb_->destroy();
    setLogReceiver(nullptr);
  }

  RunningOrb(const RunningOrb&) = delete;
  RunningOrb& operator=(const RunningOrb&) = delete;

  CORBA::ORB_ptr get() { return orb_.in(); }

 private:
  CORBA::ORB_var orb_;
};

class ClientOrb final : public Orb {
 public:
  explicit ClientOrb(const Options& options) : orb_(options, "") {}

  CORBA::ORB_ptr get() override { return orb_.get(); }

 private:
  RunningOrb orb_;
};

// Stands at a key for the servant that is published there, so that one servant can come and go
// while the others of the same POA serve on.
class Gate final : public PortableServer::ServantBase {
 public:
  void open(PortableServer::ServantBase* servant) {
    servant->_add_ref();
    const std::lock_guard<std::mutex> lock(mutex_);
    servant_ = servant;
    type_ = servant->_mostDerivedRepoId();
  }

  // Returns when no request is running.
  void close() {
    std::unique_lock<std::mutex> lock(mutex_);
    const PortableServer::ServantBase_var servant = std::exchange(servant_, nullptr);
    idle_.wait(lock, [this] { return running_ == 0; });
    lock.unlock();  // the reference is dropped without it
  }

  _CORBA_Boolean _dispatch(omniCallHandle& call) override {
    const Passage passage(*this);
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
  // One request on its way.
  struct Passage {
    explicit Passage(Gate& passed) : gate(passed) {
      const std::lock_guard<std::mutex> lock(gate.mutex_);
      if (gate.servant_ == nullptr) {
        throw CORBA::TRANSIENT(omni::TRANSIENT_POANoResource, CORBA::COMPLETED_NO);
      }
      servant = gate.servant_;
      ++gate.running_;
    }

    ~Passage() {
      const std::lock_guard<std::mutex> lock(gate.mutex_);
      if (--gate.running_ == 0) {
        gate.idle_.notify_all();
      }
    }

    Passage(const Passage&) = delete;
    Passage& operator=(const Passage&) = delete;

    Gate& gate;
    PortableServer::ServantBase* servant = nullptr;
  };

  std::mutex mutex_;
  std::condition_variable idle_;
  PortableServer::ServantBase* servant_ = nullptr;  // guarded by mutex_, null while closed
  std::string type_;                                // guarded by mutex_, constant while open
  std::size_t running_ = 0;                         // guarded by mutex_
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

  CORBA::Object_ptr publish(PortableServer::ServantBase* servant) override {
    gate()->open(servant);
    return poa_->id_to_reference(id_.in());
  }

  void retire() override { gate()->close(); }

 private:
  Gate* gate() { return static_cast<Gate*>(gate_.in()); }

  const PortableServer::ObjectId_var id_;
  const PortableServer::ServantBase_var gate_;
  PortableServer::POA_var poa_;
};

// What the ORB publishes in its references: "giop:tcp:HOST:PORT".
std::string publishedAddress(CORBA::Object_ptr reference) {
  if (CORBA::is_nil(reference)) {
    return "";
  }
  omniIOR* ior = reference->_PR_getobj()->_getIOR();
  std::string address;
  omni::giopAddressList& addresses = ior->getIORInfo()->addresses();
  if (!addresses.empty()) {
    address = addresses.front()->address();
  }
  ior->release();
  return address;
}

const std::string kTcp = "giop:tcp:";

Endpoint parseAddress(const std::string& address) {
  const std::size_t host = kTcp.size();
  const std::size_t colon = address.rfind(':');
  std::string name = address.substr(host, colon - host);
  if (name.size() > 2 && name.front() == '[') {
    name = name.substr(1, name.size() - 2);
  }
  return {name, static_cast<std::uint16_t>(std::stoul(address.substr(colon + 1)))};
}

// The ORB's lines begin with its name.
std::string withoutPrefix(const std::string& line) {
  const std::string prefix = "omniORB: ";
  return line.compare(0, prefix.size(), prefix) == 0 ? line.substr(prefix.size()) : line;
}

// Like the log function, an interceptor is a plain function without context.
std::shared_mutex observerMutex;
RequestObserver requestObserver;  // guarded by observerMutex

CORBA::Boolean observeRequest(omni::omniInterceptors::serverReceiveRequest_T::info_T& info) {
  const std::shared_lock<std::shared_mutex> lock(observerMutex);
  if (requestObserver) {
    const auto* key = reinterpret_cast<const char*>(info.giop_s.key());
    requestObserver(ObjectKey(key, static_cast<std::size_t>(info.giop_s.keysize())));
  }
  return true;
}

class ListeningOrb final : public Server {
 public:
  ListeningOrb(const Options& options, const Endpoint& endpoint) : orb_(options, format(endpoint)) {
    const CORBA::Object_var object = orb_.get()->resolve_initial_references("RootPOA");
    root_ = PortableServer::POA::_narrow(object);
    const CORBA::Object_var probe = root_->create_reference("IDL:omg.org/CORBA/Object:1.0");
    endpoint_ = parseAddress(publishedAddress(probe));
  }

  ~ListeningOrb() override { ListeningOrb::observeRequests(nullptr); }

  CORBA::ORB_ptr get() override { return orb_.get(); }

  void observeRequests(RequestObserver observer) override {
    const bool wanted = observer != nullptr;
    {
      const std::unique_lock<std::shared_mutex> lock(observerMutex);
      requestObserver = std::move(observer);
    }
    auto& interceptor = omniORB::getInterceptors()->serverReceiveRequest;
    if (wanted && !observing_) {
      interceptor.add(observeRequest);
    } else if (!wanted && observing_) {
      interceptor.remove(observeRequest);
    }
    observing_ = wanted;
  }

  PortableServer::POA_ptr rootPoa() override { return root_.in(); }

  Endpoint endpoint() override { return endpoint_; }

  std::unique_ptr<WellKnownObject> wellKnownObject(const std::string& key) override {
    return std::make_unique<InsObject>(orb_.get(), key);
  }

 private:
  RunningOrb orb_;
  bool observing_ = false;
  Endpoint endpoint_;
  PortableServer::POA_var root_;
};

}  // namespace

std::unique_ptr<Orb> startClient(const Options& options) {
  return std::make_unique<ClientOrb>(options);
}

std::unique_ptr<Server> startServer(const Options& options, const Endpoint& endpoint,
                                    const LogFunction& log) {
  // What the ORB says of a start that fails is the reason of the exception, not a matter for the
  // log.
  std::vector<std::string> said;
  setLogReceiver([&said](const std::string& line) { said.push_back(line); });
  try {
    auto server = std::make_unique<ListeningOrb>(options, endpoint);
    setLogReceiver(log);
    if (log) {
      std::for_each(said.begin(), said.end(), log);
    }
    return server;
  } catch (const CORBA::SystemException&) {
    // The ORB starts to listen with its root POA; nothing else in the start can fail this way.
    setLogReceiver(nullptr);
    throw EndpointError("cannot listen on " + format(endpoint) +
                        (said.empty() ? "" : ": " + withoutPrefix(said.front())));
  }
}

std::string addressOf(CORBA::Object_ptr reference) {
  const std::string address = publishedAddress(reference);
  return address.compare(0, kTcp.size(), kTcp) == 0 ? address.substr(kTcp.size()) : "";
}

CORBA::Object_ptr objectBeside(CORBA::ORB_ptr orb, CORBA::Object_ptr reference,
                               const std::string& key) {
  const std::string address = addressOf(reference);
  if (address.empty()) {
    throw CORBA::BAD_PARAM(0, CORBA::COMPLETED_NO);
  }
  return orb->string_to_object(("corbaloc:iiop:1.2@" + address + "/" + key).c_str());
}

void setCallTimeout(CORBA::Object_ptr reference, std::chrono::milliseconds timeout) {
  omniORB::setClientCallTimeout(reference, static_cast<CORBA::ULong>(timeout.count()));
}

ObjectKey objectKeyOf(CORBA::Object_ptr reference) {
  _CORBA_Unbounded_Sequence_Octet key;
  omniIOR* ior = reference->_PR_getobj()->_getIOR();
  IIOP::unmarshalObjectKey(ior->iopProfiles()[0], key);
  ior->release();
  return ObjectKey(reinterpret_cast<const char*>(key.get_buffer()), key.length());
}

std::string describe(const CORBA::SystemException& failure) {
  const char* cause = failure.NP_minorString();
  std::string text = failure._name();
  if (cause != nullptr) {
    text += std::string(" (") + cause + ")";
  }
  return text;
}

bool isMessageTooLarge(const CORBA::SystemException& failure) {
  if (CORBA::MARSHAL::_downcast(&failure) == nullptr) {
    return false;
  }
  switch (failure.minor()) {
    case omni::MARSHAL_MessageSizeExceedLimit:
    case omni::MARSHAL_MessageSizeExceedLimitOnClient:
    case omni::MARSHAL_MessageSizeExceedLimitOnServer:
    case omni::MARSHAL_MessageTooLong:
    // In a message of several fragments the limit is met while a part of it is read.
    case omni::MARSHAL_PassEndOfMessage:
    case omni::MARSHAL_SequenceIsTooLong:
    case omni::MARSHAL_StringIsTooLong:
      return true;
    default:
      return false;
  }
}

bool isBrokenOff(const CORBA::SystemException& failure) {
  return CORBA::COMM_FAILURE::_downcast(&failure) != nullptr &&
         failure.minor() == omni::COMM_FAILURE_UnMarshalResults;
}

bool isTimeout(const CORBA::SystemException& failure) {
  return CORBA::TIMEOUT::_downcast(&failure) != nullptr ||
         (CORBA::TRANSIENT::_downcast(&failure) != nullptr &&
          failure.minor() == omni::TRANSIENT_CallTimedout);
}

bool isConnectionClosed(const CORBA::SystemException& failure) {
  return CORBA::COMM_FAILURE::_downcast(&failure) != nullptr ||
         (CORBA::TRANSIENT::_downcast(&failure) != nullptr &&
          failure.minor() == omni::TRANSIENT_ConnectionClosed);
}

bool isUnreachable(const CORBA::SystemException& failure) {
  if (isBrokenOff(failure)) {
    return false;
  }
  return CORBA::TRANSIENT::_downcast(&failure) != nullptr ||
         CORBA::COMM_FAILURE::_downcast(&failure) != nullptr ||
         CORBA::TIMEOUT::_downcast(&failure) != nullptr ||
         CORBA::OBJECT_NOT_EXIST::_downcast(&failure) != nullptr;
}

}  // namespace orb
