// Start and end of an ORB.

#include "orb/orb.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "../addresses.h"
#include "../listening.h"
#include "../loglimiter.h"
#include "drain.h"
#include "log.h"
#include "requests.h"
#include "settings.h"
#include "strands.h"
#include "wellknown.h"

namespace orb {
namespace {

class RunningOrb {
 public:
  RunningOrb(const Options& options, const std::string& listenAt)
      : orb_(initOrb(options, listenAt)) {
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

// Removes the ORB's name from a line of the ORB's log.
std::string withoutPrefix(const std::string& line) {
  const std::string prefix = "omniORB: ";
  return line.compare(0, prefix.size(), prefix) == 0 ? line.substr(prefix.size()) : line;
}

class ListeningOrb final : public Server {
 public:
  ListeningOrb(const Options& options, const Endpoint& endpoint) : orb_(options, format(endpoint)) {
    interceptRequests();
    const CORBA::Object_var object = orb_.get()->resolve_initial_references("RootPOA");
    root_ = PortableServer::POA::_narrow(object);
    const CORBA::Object_var probe = root_->create_reference("IDL:omg.org/CORBA/Object:1.0");
    endpoint_ = parseEndpoint(addressOf(probe.in()));
  }

  ~ListeningOrb() override { ListeningOrb::observeRequests(nullptr); }

  CORBA::ORB_ptr get() override { return orb_.get(); }

  void observeRequests(RequestObserver observer) override {
    setRequestObserver(std::move(observer));
  }

  PortableServer::POA_ptr rootPoa() override { return root_.in(); }

  Endpoint endpoint() override { return endpoint_; }

  std::size_t openConnections() override {
    std::size_t count = 0;
    const omni_tracedmutex_lock lock(*omni::omniTransportLock);
    forEachStrand([&count](const omni::giopStrand&) { ++count; });
    return count;
  }

  std::unique_ptr<WellKnownObject> wellKnownObject(const std::string& key) override {
    return makeWellKnownObject(orb_.get(), key);
  }

 private:
  RunningOrb orb_;
  Endpoint endpoint_;
  PortableServer::POA_var root_;
};

}  // namespace

std::unique_ptr<Orb> startClient(const Options& options) {
  return std::make_unique<ClientOrb>(options);
}

std::unique_ptr<Server> startServer(const Options& options, const Endpoint& endpoint,
                                    const LogFunction& log) {
  // If the start fails, the ORB's lines become the reason of the exception instead of log lines.
  std::vector<std::string> startLines;
  setLogReceiver([&startLines](const std::string& line) { startLines.push_back(line); });
  try {
    const ListeningCheck check;
    auto server = std::make_unique<ListeningOrb>(options, endpoint);
    check.requireOnly(server->endpoint());
    setLogReceiver(limited(log));
    if (log) {
      std::for_each(startLines.begin(), startLines.end(), log);
    }
    return server;
  } catch (const CORBA::SystemException&) {
    // The ORB listens when the root POA is created; no other step of the start fails with this
    // type.
    setLogReceiver(nullptr);
    throw EndpointError("cannot listen on " + format(endpoint) +
                        (startLines.empty() ? "" : ": " + withoutPrefix(startLines.front())));
  } catch (...) {
    setLogReceiver(nullptr);  // the receiver borrows startLines
    throw;
  }
}

}  // namespace orb
