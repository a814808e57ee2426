// Start and end of an ORB.

#include "orb/orb.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "../listening.h"
#include "../loglimiter.h"
#include "../tls.h"
#include "checkedcalls.h"
#include "drain.h"
#include "incoming/serverstate.h"
#include "log.h"
#include "requests.h"
#include "settings.h"
#include "strands.h"
#include "wellknown.h"

namespace orb {
namespace {

class RunningOrb {
 public:
  RunningOrb(const Options& options, const std::shared_ptr<ServerState>& state)
      : orb_(initOrb(options, state)) {
    setDrainGrace(options.drainGrace);
  }

  // The Drain reads the ORB's lists of connections, so destroy() follows the end of the Drain.
  ~RunningOrb() {
    {
      const Drain drain([](const omni::GIOP_S&) { return true; }, Drain::Others::kClosed);
      orb_->shutdown(true);
    }
    orb_->destroy();
    setLogReceiver(nullptr);
    setOutgoingTls(nullptr);
  }

  RunningOrb(const RunningOrb&) = delete;
  RunningOrb& operator=(const RunningOrb&) = delete;

  CORBA::ORB_ptr get() { return orb_.in(); }

 private:
  CORBA::ORB_var orb_;
};

class ClientOrb final : public Orb {
 public:
  explicit ClientOrb(const Options& options) : orb_(options, nullptr) {}

  CORBA::ORB_ptr get() override { return orb_.get(); }

 private:
  RunningOrb orb_;
};

// Removes the ORB's name from a line of the ORB's log.
std::string withoutPrefix(const std::string& line) {
  const std::string prefix = "omniORB: ";
  return line.compare(0, prefix.size(), prefix) == 0 ? line.substr(prefix.size()) : line;
}

class ListeningOrb final : public Server {
 public:
  ListeningOrb(const Options& options, std::shared_ptr<ServerState> state)
      : state_(std::move(state)), orb_(options, state_) {
    interceptRequests(options.requestMeter);
    interceptCalls();
    const CORBA::Object_var object = orb_.get()->resolve_initial_references("RootPOA");
    root_ = PortableServer::POA::_narrow(object);
  }

  ~ListeningOrb() override {
    ListeningOrb::observeRequests(nullptr);
    setRequestCheck(nullptr);
  }

  CORBA::ORB_ptr get() override { return orb_.get(); }

  void observeRequests(RequestObserver observer) override {
    setRequestObserver(std::move(observer));
  }

  PortableServer::POA_ptr rootPoa() override { return root_.in(); }

  const std::vector<Endpoint>& endpoints() override { return state_->addresses.published(); }

  std::size_t openConnections() override {
    std::size_t count = 0;
    const omni_tracedmutex_lock lock(*omni::omniTransportLock);
    forEachStrand([&count](const omni::giopStrand&) { ++count; });
    return count;
  }

  void reloadTls() override {
    if (state_->tls) {
      state_->tls->reload();
    }
  }

  std::unique_ptr<WellKnownObject> wellKnownObject(const std::string& key) override {
    return makeWellKnownObject(orb_.get(), key);
  }

 private:
  const std::shared_ptr<ServerState> state_;
  RunningOrb orb_;
  PortableServer::POA_var root_;
};

}  // namespace

void checkRequests(Server& /*the only one*/, RequestCheck check) {
  setRequestCheck(std::move(check));
}

std::unique_ptr<Orb> startClient(const Options& options) {
  startTls(options.tls);
  return std::make_unique<ClientOrb>(options);
}

std::unique_ptr<Server> startServer(const Options& options, const std::vector<Endpoint>& endpoints,
                                    const LogFunction& log) {
  const auto state = std::make_shared<ServerState>(options, endpoints, startTls(options.tls));
  for (const Endpoint& endpoint : endpoints) {
    if (endpoint.transport == Transport::kTls && options.tls.certificate.empty()) {
      throw EndpointError("cannot listen on " + format(endpoint) + ": there is no certificate");
    }
  }
  // If the start fails, the ORB's lines become the reason of the exception instead of log lines.
  std::vector<std::string> startLines;
  setLogReceiver([&startLines](const std::string& line) { startLines.push_back(line); });
  try {
    const ListeningCheck check;
    auto server = std::make_unique<ListeningOrb>(options, state);
    check.requireOnly(state->addresses.bound());
    setLogReceiver(limited(log));
    if (log) {
      std::for_each(startLines.begin(), startLines.end(), log);
    }
    return server;
  } catch (const CORBA::SystemException&) {
    // The ORB listens when the root POA is created; no other step of the start fails with this
    // type.
    setLogReceiver(nullptr);
    const std::size_t failed = std::min(state->addresses.bound().size(), endpoints.size() - 1);
    throw EndpointError("cannot listen on " + format(endpoints[failed]) +
                        (startLines.empty() ? "" : ": " + withoutPrefix(startLines.front())));
  } catch (...) {
    setLogReceiver(nullptr);  // the receiver borrows startLines
    throw;
  }
}

}  // namespace orb
