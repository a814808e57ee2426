// An ORB's life.

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
#include "wellknown.h"

namespace orb {
namespace {

class RunningOrb {
 public:
  RunningOrb(const Options& options, const std::string& listenAt)
      : orb_(initOrb(options, listenAt)) {
    setDrainGrace(options.drainGrace);
  }

  // Destruction takes the ORB's lists of connections away, so it comes after the Drain.
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

// The ORB's lines begin with its name.
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
  // What the ORB says of a start that fails is the reason of the exception, not a matter for the
  // log.
  std::vector<std::string> said;
  setLogReceiver([&said](const std::string& line) { said.push_back(line); });
  try {
    const ListeningCheck check;
    auto server = std::make_unique<ListeningOrb>(options, endpoint);
    check.requireOnly(server->endpoint());
    setLogReceiver(limited(log));
    if (log) {
      std::for_each(said.begin(), said.end(), log);
    }
    return server;
  } catch (const CORBA::SystemException&) {
    // The ORB starts to listen with its root POA; nothing else in the start can fail this way.
    setLogReceiver(nullptr);
    throw EndpointError("cannot listen on " + format(endpoint) +
                        (said.empty() ? "" : ": " + withoutPrefix(said.front())));
  } catch (...) {
    setLogReceiver(nullptr);  // it borrows `said`
    throw;
  }
}

}  // namespace orb
