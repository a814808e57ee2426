// Start and end of an ORB.

#include "orb/orb.h"

#include <ace/Service_Config.h>
#include <ace/Time_Value.h>
#include <netdb.h>
#include <tao/Codeset/Codeset.h>
#include <tao/ORB_Core.h>
#include <tao/PortableServer/Root_POA.h>
#include <tao/ServerRequestInterceptor_Adapter.h>
#include <tao/default_client.h>
#include <tao/default_server.h>

#include <cstdlib>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include "../listening.h"
#include "../tls.h"
#include "barekeys.h"
#include "connections.h"
#include "incoming.h"
#include "messagelimit.h"
#include "metering.h"
#include "outgoingcalls.h"
#include "transports.h"

namespace orb {

ORB_ONE_PER_PROCESS void configureProcess();

namespace {

// How often the accepting thread ends episodes of the log.
constexpr std::chrono::seconds kTick{1};

}  // namespace

// Configures the ORB once per process. Every incoming connection has its own thread, and every
// concurrent call its own connection, so that a slow peer delays no other peer.
void configureProcess() {
  static std::once_flag once;
  std::call_once(once, [] {
    installMessageLimit();
    installCallObserver();
    ACE_Service_Config::process_directive(ace_svc_desc_TAO_Default_Server_Strategy_Factory);
    ACE_Service_Config::process_directive(
        "static Server_Strategy_Factory \"-ORBConcurrency thread-per-connection"
        " -ORBThreadPerConnectionTimeout INFINITE\"");
    ACE_Service_Config::process_directive(ace_svc_desc_TAO_Default_Client_Strategy_Factory);
    ACE_Service_Config::process_directive(
        "static Client_Strategy_Factory \"-ORBTransportMuxStrategy exclusive"
        " -ORBClientConnectionHandler rw -ORBConnectStrategy blocked\"");
  });
}

namespace {

// An endpoint in the ORB's notation. The endpoints of TLS and TCP have one factory.
std::string notation(const Endpoint& endpoint) {
  return endpoint.transport == Transport::kUnix ? "uiop://" + endpoint.host
                                                : "iiop://" + format(endpoint);
}

// Removes the interceptors of incoming requests, which SSLIOP adds, because BareKeys dispatches
// requests without interceptors.
void removeInterceptors(TAO_ORB_Core& core) {
  if (TAO::ServerRequestInterceptor_Adapter* const all = core.serverrequestinterceptor_adapter()) {
    all->destroy_interceptors();
  }
}

CORBA::ORB_ptr initOrb(const Options& options, const std::vector<Endpoint>& listenAt,
                       const std::shared_ptr<Connections>& connections) {
  configureProcess();
  if (isOutgoingTlsSet()) {
    installTls();
  }
  limitMessages(options.maxMessageBytes);
  setConnections(connections);
  unsetenv("TAO_ORBENDPOINT");  // an additional endpoint to listen at
  std::vector<std::string> arguments = {
      "orb",
      "-ORBIgnoreDefaultSvcConfFile",  // svc.conf in the current folder
      "-ORBDottedDecimalAddresses",
      "1",
      "-ORBUseLocalMemoryPool",  // slow, and never returns memory
      "0",
      "-ORBUseIMR",  // overrides TAO_USE_IMR
      "0",
  };
  for (const Endpoint& endpoint : listenAt) {
    arguments.insert(arguments.end(), {"-ORBListenEndpoints", notation(endpoint)});
    if (endpoint.transport == Transport::kTls) {
      arguments.insert(arguments.end(), {"-ORBUseSharedProfile", "0"});
    }
  }
  std::vector<char*> argv;
  argv.reserve(arguments.size() + 1);
  for (std::string& argument : arguments) {
    argv.push_back(argument.data());
  }
  auto argc = static_cast<int>(argv.size());
  argv.push_back(nullptr);
  CORBA::ORB_var orb = CORBA::ORB_init(argc, argv.data(), "topo");
  setCallTimeout(*orb->orb_core(), options.callTimeout);
  removeInterceptors(*orb->orb_core());
  return orb._retn();
}

class RunningOrb {
 public:
  RunningOrb(const Options& options, const std::vector<Endpoint>& listenAt,
             std::shared_ptr<Connections> connections)
      : connections_(std::move(connections)), orb_(initOrb(options, listenAt, connections_)) {}

  ~RunningOrb() {
    connections_->close();
    clearCallTimeouts();
    orb_->destroy();
    setConnections(nullptr);
    setOutgoingTls(nullptr);
  }

  RunningOrb(const RunningOrb&) = delete;
  RunningOrb& operator=(const RunningOrb&) = delete;

  CORBA::ORB_ptr get() { return orb_.in(); }
  TAO_ORB_Core& core() { return *orb_->orb_core(); }
  Connections& connections() { return *connections_; }

 private:
  const std::shared_ptr<Connections> connections_;
  const CORBA::ORB_var orb_;
};

class ClientOrb final : public Orb {
 public:
  explicit ClientOrb(const Options& options)
      : orb_(options, kEndpoint,
             std::make_shared<Connections>(unlimited(options), kEndpoint, nullptr, nullptr)) {}

  CORBA::ORB_ptr get() override { return orb_.get(); }

 private:
  // The ORB listens only when the client activates an object.
  inline static const std::vector<Endpoint> kEndpoint = {{"127.0.0.1", 0}};

  // maxRequestBytes applies to servers only.
  static Options unlimited(Options options) {
    options.maxRequestBytes = options.maxMessageBytes;
    return options;
  }

  RunningOrb orb_;
};

// See Server::wellKnownObject().
class BareObject final : public WellKnownObject {
 public:
  BareObject(BareKeys& keys, std::string key)
      : keys_(keys),
        gates_(keys.gates()),
        key_(std::move(key)),
        gate_(std::make_shared<KeyGate>()) {
    gates_->add(key_, gate_);
  }

  ~BareObject() override {
    closeGate(*gate_);
    gates_->remove(key_);
  }

  CORBA::Object_ptr publish(PortableServer::ServantBase* servant, RequestGuard guard) override {
    gate_->open(servant, std::move(guard));
    return keys_.referenceTo(key_, servant->_interface_repository_id());
  }

  void retire() override { closeGate(*gate_); }

 private:
  BareKeys& keys_;  // owned by the ORB; used by publish() only, which requires a running ORB
  const std::shared_ptr<Gates> gates_;
  const std::string key_;
  const std::shared_ptr<KeyGate> gate_;
};

class ListeningOrb final : public Server {
 public:
  ListeningOrb(const Options& options, const std::vector<Endpoint>& at,
               std::shared_ptr<Connections> connections)
      : orb_(options, at, std::move(connections)), keys_(new BareKeys(orb_.core())) {
    orb_.core().adapter_registry().insert(keys_);
    if (options.requestMeter) {
      orb_.core().request_dispatcher(makeMeteredDispatcher(options.requestMeter).release());
    }
    const CORBA::Object_var object = orb_.get()->resolve_initial_references("RootPOA");
    root_ = PortableServer::POA::_narrow(object.in());
    acceptor_ = std::thread([this] { accept(); });
  }

  ~ListeningOrb() override {
    ListeningOrb::observeRequests(nullptr);
    checkRequests(nullptr);
    orb_.connections().close();
    orb_.get()->shutdown(true);
    acceptor_.join();
  }

  CORBA::ORB_ptr get() override { return orb_.get(); }

  void checkRequests(RequestCheck check) { keys_->checkRequests(std::move(check)); }

  void observeRequests(RequestObserver observer) override {
    keys_->observeRequests(std::move(observer));
  }

  PortableServer::POA_ptr rootPoa() override { return root_.in(); }

  const std::vector<Endpoint>& endpoints() override {
    return orb_.connections().addresses().published();
  }
  const std::vector<Endpoint>& bound() { return orb_.connections().addresses().bound(); }

  std::size_t openConnections() override { return orb_.connections().count(); }

  void reloadTls() override {
    if (const std::shared_ptr<TlsContext>& tls = orb_.connections().tls()) {
      tls->reload();
    }
  }

  std::unique_ptr<WellKnownObject> wellKnownObject(const std::string& key) override {
    return std::make_unique<BareObject>(*keys_, key);
  }

 private:
  // Accepts connections. The ORB starts a thread for each connection.
  void accept() {
    try {
      while (!orb_.core().has_shutdown()) {
        ACE_Time_Value tick(kTick.count());
        orb_.get()->run(tick);
        orb_.connections().endEpisodes();
      }
    } catch (const CORBA::Exception&) {
      // The ORB has ended before or during run().
    }
  }

  RunningOrb orb_;
  BareKeys* const keys_;  // owned by the ORB
  PortableServer::POA_var root_;
  std::thread acceptor_;
};

// Returns the reason why a host name has no address; "" for a known host. The ORB does not report
// this reason.
std::string lookupFailure(const std::string& host) {
  addrinfo* found = nullptr;
  const int failure = getaddrinfo(host.c_str(), nullptr, nullptr, &found);
  if (failure != 0) {
    return gai_strerror(failure);
  }
  freeaddrinfo(found);
  return "";
}

// Throws EndpointError for an endpoint at which the ORB cannot listen.
void checkEndpoint(const Endpoint& endpoint, const Options& options) {
  std::string reason;
  if (endpoint.transport == Transport::kTls && !hasTls()) {
    reason = "this program was built without TLS";
  } else if (endpoint.transport == Transport::kTls && options.tls.certificate.empty()) {
    reason = "there is no certificate";
  } else if (endpoint.transport != Transport::kUnix) {
    reason = lookupFailure(endpoint.host);
  }
  if (!reason.empty()) {
    throw EndpointError("cannot listen on " + format(endpoint) + ": " + reason);
  }
}

}  // namespace

void checkRequests(Server& server, RequestCheck check) {
  static_cast<ListeningOrb&>(server).checkRequests(std::move(check));
}

std::unique_ptr<Orb> startClient(const Options& options) {
  startTls(options.tls);
  return std::make_unique<ClientOrb>(options);
}

// The log function receives no lines of this ORB, which writes diagnostics to ACE's logger.
std::unique_ptr<Server> startServer(const Options& options, const std::vector<Endpoint>& endpoints,
                                    const LogFunction& log) {
  std::string where;
  for (const Endpoint& endpoint : endpoints) {
    where += (where.empty() ? "" : ", ") + format(endpoint);
    checkEndpoint(endpoint, options);
  }
  try {
    const ListeningCheck check;
    const auto connections =
        std::make_shared<Connections>(options, endpoints, startTls(options.tls), log);
    auto server = std::make_unique<ListeningOrb>(options, endpoints, connections);
    check.requireOnly(server->bound());
    return server;
  } catch (const CORBA::SystemException& failure) {
    setConnections(nullptr);
    throw EndpointError("cannot listen on " + where + ": " + describe(failure));
  }
}

}  // namespace orb
