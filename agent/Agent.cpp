#include "agent/Agent.h"

#include <malloc.h>

#include <algorithm>
#include <chrono>
#include <optional>
#include <utility>

#include "agent/ModuleControl.h"
#include "agent/OpenNetwork.h"
#include "agent/base/Cancellation.h"
#include "agent/base/Log.h"
#include "agent/changes/AttributeService.h"
#include "agent/changes/Backups.h"
#include "agent/changes/NetworkWriter.h"
#include "agent/changes/NodeService.h"
#include "agent/console/ConsoleServant.h"
#include "agent/console/ImportAdmission.h"
#include "agent/events/EventManager.h"
#include "agent/host/DomainService.h"
#include "agent/host/ObjectNaming.h"
#include "agent/host/Publication.h"
#include "agent/host/RunningAgent.h"
#include "agent/host/SecurityService.h"
#include "agent/model/NetworkModel.h"
#include "agent/northbound/CosNamingEntry.h"
#include "agent/northbound/Northbound.h"
#include "agent/northbound/ViewSizes.h"
#include "agent/notifications/Notifier.h"
#include "agent/notifications/SessionServant.h"
#include "agent/process/Descriptors.h"
#include "agent/process/MemoryBudget.h"
#include "agent/process/ReplaceFile.h"
#include "agent/store/NetworkStore.h"
#include "idl/ObjectKeys.h"

namespace agent {
namespace {

using object_key::kManager;

// How long receivers may take for what waits for them when the agent ends.
constexpr std::chrono::seconds kNotificationPatience{3};

// The start was asked to stop.
struct StartStopped {};

void requireNoStop(const Agent::StopRequested& stopRequested) {
  if (stopRequested()) {
    throw StartStopped();
  }
}

// Within what the process may open.
std::size_t connectionLimit(const Options& options) {
  const std::size_t descriptors = descriptorLimit();
  const std::size_t connections = connectionsWithin(descriptors, options.maxConnections);
  if (connections < options.maxConnections) {
    log(kLogErrors, "at most " + std::to_string(connections) + " connections instead of " +
                        std::to_string(options.maxConnections) + ": the limit of open files is " +
                        std::to_string(descriptors));
  }
  return connections;
}

orb::Options orbOptions(const Options& options) {
  orb::Options result;
  result.maxMessageBytes = options.maxMessageBytes;
  result.maxRequestBytes = options.maxRequestBytes;
  result.largeOperations = {"importNetwork"};
  result.maxConnections = connectionLimit(options);
  return result;
}

// The most that one kind of data may take of the memory of the process.
std::size_t shareOf(const MemoryUse& memory) {
  return std::min(memory.residentLimit, memory.addressLimit) / 4;
}

IteratorLimits iteratorLimits(const Options& options, const MemoryUse& memory) {
  const std::chrono::duration<double> timeout(options.iteratorTimeoutSeconds);
  return {std::chrono::duration_cast<std::chrono::milliseconds>(timeout), options.maxIterators,
          std::min(options.iteratorMemory, shareOf(memory))};
}

ViewLimits viewLimits(const Options& options, const MemoryUse& memory) {
  ViewLimits limits;
  limits.views = options.maxViews;
  limits.memory = std::min(options.viewMemory, shareOf(memory));
  return limits;
}

NotifierOptions notifierOptions(const Options& options) {
  NotifierOptions result;
  result.queueLimit = options.queueLimit;
  result.queueBytes = options.queueBytes;
  result.maxSubscribers = options.maxSubscribers;
  result.maxSubscribersPerPeer = options.maxSubscribersPerPeer;
  result.channel = options.eventChannel;
  return result;
}

// An object at a key of the agent's endpoint, for as long as this lives.
class Served {
 public:
  Served(orb::Server& server, const char* key, PortableServer::ServantBase* servant,
         orb::RequestGuard guard = nullptr)
      : object_(server.wellKnownObject(key)), servant_(servant) {
    const CORBA::Object_var reference = object_->publish(servant, std::move(guard));
  }

  // Waits for running requests.
  ~Served() { object_->retire(); }

  Served(const Served&) = delete;
  Served& operator=(const Served&) = delete;

 private:
  const std::unique_ptr<orb::WellKnownObject> object_;
  const PortableServer::ServantBase_var servant_;
};

TopoAgent::ModuleState_T tmfState(ModuleControl::State state) {
  switch (state) {
    case ModuleControl::State::kLoaded:
      return TopoAgent::MS_LOADED;
    case ModuleControl::State::kReloading:
      return TopoAgent::MS_RELOADING;
    case ModuleControl::State::kMissing:
      break;
  }
  return TopoAgent::MS_MISSING;
}

}  // namespace

// In the order in which they depend on each other; taken down in reverse.
class Agent::Parts final : private AgentControl {
 public:
  explicit Parts(const Options& options)
      : server_(orb::startServer(orbOptions(options), options.endpoint,
                                 [](const std::string& line) { log(kLogErrors, line); })),
        network_(openNetwork(options, store_)),
        emsName_(options.emsName.empty() ? network_.ems : options.emsName),
        model_(std::move(network_)),
        writer_(*store_, model_,
                [this](std::uint64_t /*change*/, int eventId,
                       std::vector<NS_DOMAIN::TopoNode_T> nodes) {
                  events_.raise(eventId, std::move(nodes));
                }),
        domain_(model_),
        publishedDomain_("DomainInterface", domain_),
        naming_(emsName_, model_, [](const std::string& line) { log(kLogTraces, line); }),
        publishedNaming_("CorbaUtilInterface", naming_),
        attributes_(emsName_, writer_),
        nodes_(writer_, stopping_),
        notifier_(
            *server_, notifierOptions(options),
            [this](std::uint64_t count) { return writer_.reserveNotificationIds(count); },
            [] { return std::chrono::system_clock::now(); }),
        memoryUse_(processMemory(options.memory)),
        memory_(
            memoryUse_, [] { malloc_trim(0); }, std::chrono::steady_clock::now),
        viewSizes_(model_, emsName_),
        northbound_(*server_, emsName_, options.testSwitch, iteratorLimits(options, memoryUse_()),
                    viewSetup(options)),
        module_(kManager, options.module, writer_, events_, northbound_) {
    setEventAccess(options.eventAccess);
  }

  ~Parts() {
    stopping_.request();
    entry_.reset();
    console_.reset();
    module_.unload();
    session_.reset();
    notifier_.flush(kNotificationPatience);
  }

  Parts(const Parts&) = delete;
  Parts& operator=(const Parts&) = delete;

  void start(const Options& options, const StopRequested& stopRequested) {
    requireNoStop(stopRequested);
    module_.load();
    requireNoStop(stopRequested);
    manager_ = northbound_.managers().reference(kManager);
    session_.emplace(*server_, object_key::kSession, new SessionServant(notifier_));
    if (options.console) {
      console_.emplace(*server_, object_key::kConsole, new ConsoleServant(nodes_, backups_, *this),
                       [this](const orb::Request& request) { return imports_.admit(request); });
    }
    publish(options, stopRequested);
    requireNoStop(stopRequested);
  }

  void reloadModule() override { module_.reload(); }

  void setEventAccess(EventAccess access) {
    security_.allowEventAccess(access == EventAccess::kAllowed);
    publishedSecurity_.reset();
    if (access != EventAccess::kUnknown) {
      publishedSecurity_.emplace("SecurityIF", security_);
    }
  }

  std::string managerReference() {
    const CORBA::String_var text = server_->get()->object_to_string(manager_);
    return text.in();
  }

  std::string readyLine() {
    const std::string endpoint = orb::format(server_->endpoint());
    return "topo-agentd ready: endpoint " + endpoint + ", reference corbaloc:iiop:1.2@" + endpoint +
           "/" + kManager + ", " + std::to_string(model_.topoNodeCount()) + " nodes";
  }

 private:
  void publish(const Options& options, const StopRequested& stopRequested) {
    if (!options.naming.empty()) {
      entry_ = std::make_unique<CosNamingEntry>(server_->get(), options.naming, kManager,
                                                manager_.in(), stopRequested);
    }
    if (!options.iorFile.empty()) {
      replaceFile("IOR file", options.iorFile, managerReference() + '\n');
    }
  }

  ViewSetup viewSetup(const Options& options) {
    ViewSetup setup;
    setup.limits = viewLimits(options, memoryUse_());
    setup.sizeOf = [this](ViewKind kind, bool on) { return viewSizes_.of(kind, on); };
    setup.allows = [this](std::size_t bytes) {
      return memory_.allows(bytes + imports_.reserved());
    };
    return setup;
  }

  TopoAgent::Status_T status() override {
    TopoAgent::Status_T status;
    status.moduleState = tmfState(module_.state());
    status.moduleLoads = module_.loads();
    status.testSwitch = northbound_.testSwitch();
    status.topoNodes = static_cast<CORBA::ULong>(model_.topoNodeCount());
    status.iterators = static_cast<CORBA::ULong>(northbound_.iterators().size());
    const EventManager::Status events = events_.status();
    status.subscriptions = static_cast<CORBA::ULong>(events.subscriptions);
    status.eventsQueued = static_cast<CORBA::ULong>(events.queued);
    status.eventsDropped = events.dropped;
    const NotifierStatus notifier = notifier_.status();
    status.notifications = notifier.notifications;
    status.subscribersDropped = notifier.subscribersDropped;
    status.receivers = notifier.receivers;
    return status;
  }

  void setTestSwitch(bool on) override { northbound_.setTestSwitch(on); }

  std::unique_ptr<orb::Server> server_;
  std::unique_ptr<NetworkStore> store_;
  Network network_;
  const std::string emsName_;
  NetworkModel model_;
  EventManager events_{EventManager::kDefaultQueueLimit, [this] { notifier_.reportGap(); }};
  NetworkWriter writer_;
  DomainService domain_;
  const Publication publishedDomain_;
  ObjectNaming naming_;
  const Publication publishedNaming_;
  SecurityService security_{false};
  std::optional<Publication> publishedSecurity_;
  AttributeService attributes_;
  Cancellation stopping_;
  NodeService nodes_;
  Backups backups_{writer_};
  Notifier notifier_;
  const MemoryBudget::Probe memoryUse_;
  MemoryBudget memory_;
  ImportAdmission imports_{[this](std::size_t bytes) { return memory_.allows(bytes); },
                           std::chrono::steady_clock::now};
  ViewSizes viewSizes_;
  Northbound northbound_;
  const AgentRegistration registration_{{&northbound_, &events_, &notifier_, &attributes_}};
  ModuleControl module_;
  CORBA::Object_var manager_;  // the same after every reload
  std::optional<Served> session_;
  std::optional<Served> console_;
  std::unique_ptr<CosNamingEntry> entry_;
};

Agent::Agent(Options options) : options_(std::move(options)) {}

Agent::~Agent() = default;

bool Agent::start(const StopRequested& stopRequested) {
  const StopRequested stop = stopRequested ? stopRequested : [] { return false; };
  setLogLevel(options_.logLevel);
  try {
    auto parts = std::make_unique<Parts>(options_);
    parts->start(options_, stop);
    parts_ = std::move(parts);
    return true;
  } catch (...) {
    if (!stop()) {
      throw;
    }
    return false;
  }
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
  parts_->reloadModule();
}

void Agent::setEventAccess(EventAccess access) {
  parts_->setEventAccess(access);
}

}  // namespace agent
