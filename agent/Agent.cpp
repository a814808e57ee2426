#include "agent/Agent.h"

#include <fstream>
#include <utility>

#include "agent/bundle/ModuleLoader.h"
#include "agent/domain/AttributeService.h"
#include "agent/domain/DomainService.h"
#include "agent/domain/Naming.h"
#include "agent/domain/NetworkModel.h"
#include "agent/domain/NetworkReader.h"
#include "agent/domain/NetworkStore.h"
#include "agent/northbound/CommonAttributes.h"
#include "agent/northbound/Log.h"
#include "agent/northbound/NamingEntry.h"
#include "agent/northbound/Northbound.h"
#include "platform/bundlemgr/ServiceInterface.h"

namespace agent {
namespace {

constexpr const char* kManager = "TopoManagement";

// A service interface of the agent, published for as long as this lives.
template <typename Service>
class Published {
 public:
  template <typename... Arguments>
  explicit Published(const char* name, Arguments&&... arguments)
      : service_(std::forward<Arguments>(arguments)...), buffer_(publish(name)) {}

  ~Published() { buffer_->Remove(&service_); }

  Published(const Published&) = delete;
  Published& operator=(const Published&) = delete;

 private:
  NS_BUNDLEMGR1::InterfaceBuffer* publish(const char* name) {
    NS_BUNDLEMGR1::SetIFBuf(name, &service_);
    return NS_BUNDLEMGR1::CheckIFBuf(name);
  }

  Service service_;
  NS_BUNDLEMGR1::InterfaceBuffer* const buffer_;
};

orb::Options orbOptions(const Options& options) {
  orb::Options result;
  result.maxMessageBytes = options.maxMessageBytes;
  return result;
}

IteratorLimits iteratorLimits(const Options& options) {
  const std::chrono::duration<double> timeout(options.iteratorTimeoutSeconds);
  return {std::chrono::duration_cast<std::chrono::milliseconds>(timeout), options.maxIterators};
}

// The network that is served: the store's, which is loaded from the network file when it is new.
// The file is read before a store is made, so that a bad one leaves nothing behind.
Network openNetwork(const Options& options, std::unique_ptr<NetworkStore>& store) {
  const bool load = !options.network.empty() && NetworkStore::needsNetwork(options.store);
  Network network;
  if (load) {
    network = readNetworkFile(options.network);
  }
  store = std::make_unique<NetworkStore>(options.store);
  if (!load) {
    if (!options.network.empty()) {
      log(kLogErrors, "store " + options.store + " holds a network already, " +
                          options.network.string() + " is not loaded");
    }
    return store->read();
  }
  store->load(network);
  return network;
}

// Written under another name first: whoever waits for the file never reads half of it.
void writeIorFile(const std::filesystem::path& path, const std::string& reference) {
  const std::filesystem::path draft = path.string() + ".new";
  std::ofstream file(draft);
  file << reference << '\n';
  file.close();
  std::error_code status;
  if (file) {
    std::filesystem::rename(draft, path, status);
  }
  if (!file || status) {
    std::filesystem::remove(draft, status);
    throw std::runtime_error("IOR file " + path.string() + ": cannot be written");
  }
}

}  // namespace

// In the order in which they depend on each other; taken down in reverse.
class Agent::Parts {
 public:
  explicit Parts(const Options& options)
      : server_(orb::startServer(orbOptions(options), options.endpoint,
                                 [](const std::string& line) { log(kLogErrors, line); })),
        network_(openNetwork(options, store_)),
        emsName_(options.emsName.empty() ? network_.ems : options.emsName),
        model_(std::move(network_)),
        domain_("DomainInterface", model_),
        naming_("CorbaUtilInterface", emsName_, model_),
        attributes_(emsName_, *store_, model_),
        offeredAttributes_(attributes_),
        northbound_(*server_, emsName_, options.testSwitch, iteratorLimits(options)),
        loader_(options.module) {}

  ~Parts() {
    entry_.reset();
    unloadModule();
  }

  Parts(const Parts&) = delete;
  Parts& operator=(const Parts&) = delete;

  void start(const Options& options) {
    loadModule(options);
    publish(options);
  }

  void loadModule(const Options& options) {
    northbound_.open();
    loader_.load();
    if (!northbound_.managers().serving(kManager)) {
      throw ModuleError("module " + options.module.string() + ": it does not serve " + kManager);
    }
  }

  // Nothing of the module may be in use when it goes.
  void unloadModule() {
    northbound_.retire();
    loader_.unload();
  }

  std::string managerReference() {
    const CORBA::Object_var manager = northbound_.managers().reference(kManager);
    const CORBA::String_var text = server_->get()->object_to_string(manager);
    return text.in();
  }

  std::string readyLine() {
    const std::string endpoint = orb::format(server_->endpoint());
    return "topo-agentd ready: endpoint " + endpoint + ", reference corbaloc:iiop:1.2@" + endpoint +
           "/" + kManager + ", " + std::to_string(model_.topoNodeCount()) + " nodes";
  }

 private:
  void publish(const Options& options) {
    if (!options.naming.empty()) {
      const CORBA::Object_var manager = northbound_.managers().reference(kManager);
      entry_ =
          std::make_unique<NamingEntry>(server_->get(), options.naming, kManager, manager.in());
    }
    if (!options.iorFile.empty()) {
      writeIorFile(options.iorFile, managerReference());
    }
  }

  std::unique_ptr<orb::Server> server_;
  std::unique_ptr<NetworkStore> store_;
  Network network_;
  const std::string emsName_;
  NetworkModel model_;
  Published<DomainService> domain_;
  Published<NamingService> naming_;
  AttributeService attributes_;
  const OfferedAttributes offeredAttributes_;
  Northbound northbound_;
  ModuleLoader loader_;
  std::unique_ptr<NamingEntry> entry_;
};

Agent::Agent(Options options) : options_(std::move(options)) {}

Agent::~Agent() = default;

void Agent::start() {
  setLogLevel(options_.logLevel);
  auto parts = std::make_unique<Parts>(options_);
  parts->start(options_);
  parts_ = std::move(parts);
}

void Agent::stop() {
  parts_.reset();
}

std::string Agent::readyLine() {
  return parts_->readyLine();
}

std::string Agent::managerReference() {
  return parts_->managerReference();
}

void Agent::reloadModule() {
  parts_->unloadModule();
  parts_->loadModule(options_);
}

}  // namespace agent
