#include "agent/Agent.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "agent/AgentMetrics.h"
#include "agent/AgentStatus.h"
#include "agent/ManagerPublication.h"
#include "agent/ModuleControl.h"
#include "agent/OpenNetwork.h"
#include "agent/OptionChecks.h"
#include "agent/RoomOptions.h"
#include "agent/access/AccessControl.h"
#include "agent/access/AuditLog.h"
#include "agent/access/PushTargets.h"
#include "agent/base/Cancellation.h"
#include "agent/base/Log.h"
#include "agent/changes/AttributeService.h"
#include "agent/changes/Backups.h"
#include "agent/changes/InventoryService.h"
#include "agent/changes/NetworkWriter.h"
#include "agent/changes/NodeService.h"
#include "agent/console/ConsoleServant.h"
#include "agent/console/ImportAdmission.h"
#include "agent/events/EventManager.h"
#include "agent/host/HostServices.h"
#include "agent/host/RunningAgent.h"
#include "agent/metrics/HttpEndpoint.h"
#include "agent/metrics/RequestMetrics.h"
#include "agent/model/NetworkModel.h"
#include "agent/network/NetworkSource.h"
#include "agent/northbound/Northbound.h"
#include "agent/northbound/ServedObject.h"
#include "agent/northbound/ViewSizes.h"
#include "agent/notifications/Notifier.h"
#include "agent/notifications/SessionServant.h"
#include "agent/process/Heap.h"
#include "agent/process/MemoryBudget.h"
#include "agent/store/NetworkStore.h"
#include "idl/ObjectKeys.h"
#include "orb/requestcheck.h"

namespace agent {
namespace {

using object_key::kManager;

constexpr const char* kPlainText = "text/plain; charset=utf-8";
constexpr const char* kMetricsText = "text/plain; version=0.0.4; charset=utf-8";

// The longest wait of a stop for queued notifications.
constexpr std::chrono::seconds kNotificationPatience{3};

// Null without --metrics: requests are not measured then.
std::unique_ptr<RequestMetrics> requestMetrics(const Options& options) {
  std::unique_ptr<RequestMetrics> metrics;
  if (options.metrics) {
    metrics = std::make_unique<RequestMetrics>();
  }
  return metrics;
}

// Whether any connection may use TLS. Without --tls-cert, --tls-ca verifies the servers of outgoing
// calls.
bool hasTlsFiles(const orb::TlsOptions& tls) {
  return !tls.certificate.empty() || !tls.authorities.empty();
}

// metrics: null, or outlives the server.
std::unique_ptr<orb::Server> startServer(const Options& options, RequestMetrics* metrics) {
  checkTls(options);
  if (!options.tls.certificate.empty() && options.tls.clients == orb::TlsOptions::Clients::kNone) {
    log(kLogErrors, "--tls-clients none: no rule of access applies to a client on TLS");
  }
  orb::Options serverOptions = orbOptions(options);
  if (metrics != nullptr) {
    serverOptions.requestMeter = [metrics](const orb::FinishedRequest& request) {
      metrics->count(request);
    };
  }
  std::unique_ptr<orb::Server> server = orb::startServer(
      serverOptions, options.endpoints, [](const std::string& line) { log(kLogErrors, line); });
  checkReferences(server->get(), options);
  return server;
}

// The largest file that an import accepts. Leaves room in the message for the header, the service
// contexts and the name of the file.
std::size_t largestImport(std::size_t maxMessageBytes) {
  constexpr std::size_t kOthers = std::size_t{64} << 10;
  return maxMessageBytes - std::min(maxMessageBytes, kOthers);
}

}  // namespace

// The parts in the order of their dependencies, destroyed in the reverse order.
class Agent::Parts final : private AgentControl {
 public:
  explicit Parts(const Options& options)
      : options_(options),
        audit_(openAudit(options)),
        access_(accessRules(options), accessSettings(options), std::chrono::steady_clock::now),
        pushTargets_(pushRanges(options)),
        requestMetrics_(requestMetrics(options)),
        server_(startServer(options, requestMetrics_.get())),
        network_(openNetwork(options, store_)),
        model_(*network_),
        emsName_(options.emsName.empty() ? model_.ems() : options.emsName),
        writer_(
            checkedStore(), model_,
            [this](std::uint64_t change, int eventId, std::vector<NS_DOMAIN::TopoNode_T> nodes) {
              events_.raise(change, eventId, std::move(nodes));
            }),
        services_(emsName_, model_, options.eventAccess),
        attributes_(emsName_, writer_),
        nodes_(writer_, stopping_),
        inventory_(writer_),
        notifier_(*server_, notifierOptions(options),
                  ChangeNumbers{store_->lastChange(), EventManager::changeInProgress},
                  [] { return std::chrono::system_clock::now(); }),
        memoryUse_(processMemory(options.memory)),
        memory_(memoryUse_, returnFreedMemory, std::chrono::steady_clock::now),
        viewSizes_(model_, emsName_),
        northbound_(*server_, emsName_, options.testSwitch, iteratorLimits(options, memoryUse_()),
                    viewSetup(options)),
        module_(kManager, options.module, writer_, events_, northbound_) {
    if (audit_) {
      setRequestRecorder([this](const RequestRecord& record) { audit_->record(record); });
    }
    orb::checkRequests(*server_, [this](const orb::ObjectKey& key, const orb::Request& request) {
      access_.check(key, request);
    });
  }

  ~Parts() {
    health_.reset();
    stopping_.request();
    publication_.reset();
    console_.reset();
    module_.unload();
    session_.reset();
    notifier_.flush(kNotificationPatience);
    setRequestRecorder(nullptr);
  }

  Parts(const Parts&) = delete;
  Parts& operator=(const Parts&) = delete;

  // Returns false when stopRequested() was true before the end of the start.
  bool start(const Options& options, const StopRequested& stopRequested) {
    if (stopRequested()) {
      return false;
    }
    if (options.metrics) {
      health_.emplace(*options.metrics, healthPages());
      log(kLogEvents, "serves metrics on " + orb::format(health_->endpoint()));
    }
    module_.load();
    if (stopRequested()) {
      return false;
    }
    manager_ = northbound_.managers().reference(kManager);
    session_.emplace(*server_, object_key::kSession,
                     new SessionServant(notifier_, tmfAccess(options.eventAccess),
                                        [this](const std::vector<orb::Destination>& destinations,
                                               const orb::Peer& client) {
                                          return pushTargets_.refusalOf(destinations, client);
                                        }));
    if (options.console) {
      console_.emplace(*server_, object_key::kConsole,
                       new ConsoleServant(nodes_, inventory_, attributes_, backups_, *this),
                       [this](const orb::Request& request) { return imports_.admit(request); });
    }
    publication_.emplace(*server_, manager_.in(), options, stopRequested);
    published_ = true;
    return !stopRequested();
  }

  void reloadModule() override { module_.reload(); }

  std::string managerReference() { return referenceText(*server_, manager_.in()); }

  void checkAlive() { model_.topoNodeCount(); }

  // A part that cannot be reloaded keeps its former files; the other parts are reloaded.
  void reloadFiles() {
    if (audit_) {
      audit_->reopen();
    }
    if (!options_.access.empty()) {
      reload("access rules", [this] { access_.replaceRules(accessRules(options_)); });
    }
    if (hasTlsFiles(options_.tls)) {
      reload("TLS certificates", [this] { server_->reloadTls(); });
    }
  }

  std::string summary() {
    return "endpoint " + orb::format(server_->endpoint()) + ", store " + options_.store + ", " +
           std::to_string(model_.topoNodeCount()) + " nodes, module " + options_.module.string() +
           " version " + module_.version();
  }

  std::string readyLine() {
    const std::vector<orb::Endpoint>& endpoints = server_->endpoints();
    std::string further;
    for (std::size_t i = 1; i < endpoints.size(); ++i) {
      further += (i == 1 ? ", also at " : " ") + orb::format(endpoints[i]);
    }
    return "topo-agentd ready: endpoint " + orb::format(endpoints.front()) + ", reference " +
           orb::corbaloc(endpoints.front(), kManager) + ", " +
           std::to_string(model_.topoNodeCount()) + " nodes" + further;
  }

 private:
  template <typename Act>
  static void reload(const std::string& what, const Act& act) {
    try {
      act();
      log(kLogEvents, "uses the " + what + " as they are now");
    } catch (const std::exception& failure) {
      log(kLogErrors, "the " + what + " stay as they were: " + failure.what());
    }
  }

  // Waits for the end of the reading and the check of the store. Throws StoreError for a damaged
  // store.
  NetworkStore& checkedStore() {
    network_->finish();
    network_.reset();
    return *store_;
  }

  ViewSetup viewSetup(const Options& options) {
    ViewSetup setup;
    setup.limits = viewLimits(options, memoryUse_());
    setup.sizeOf = [this](ViewKind kind, bool on) { return viewSizes_.of(kind, on); };
    setup.allows = [this](std::size_t bytes) {
      return memory_.allows(bytes + imports_.reserved());
    };
    setup.returnFreedMemory = returnFreedMemory;
    return setup;
  }

  TopoAgent::Status_T status() override {
    return agentStatus({options_, emsName_, std::chrono::steady_clock::now() - started_, module_,
                        model_, viewSizes_, events_, northbound_, notifier_, auditStatus()});
  }

  AuditStatus auditStatus() const { return audit_ ? audit_->status() : AuditStatus(); }

  std::string metricsPage() {
    MetricFamilies families = agentMetrics(
        {*server_, module_, model_, writer_, events_, northbound_, notifier_, auditStatus().lost});
    for (prometheus::MetricFamily& family : requestMetrics_->collect()) {
      families.push_back(std::move(family));
    }
    return metricsText(families);
  }

  HttpAnswer readyPage() {
    const std::string reason = published_ ? reasonNotReady(module_, writer_) : "the agent starts";
    return reason.empty() ? HttpAnswer{200, kPlainText, "ready\n"}
                          : HttpAnswer{503, kPlainText, reason + "\n"};
  }

  HttpEndpoint::Pages healthPages() {
    return {{"/metrics",
             [this] {
               return HttpAnswer{200, kMetricsText, metricsPage()};
             }},
            {"/ready", [this] { return readyPage(); }},
            {"/live", [this] {
               checkAlive();
               return HttpAnswer{200, kPlainText, "alive\n"};
             }}};
  }

  ExportLimits exportLimits() {
    return {largestImport(options_.maxMessageBytes),
            [this](std::uint64_t storedBytes) { return imports_.admitExport(storedBytes); }};
  }

  void setTestSwitch(bool on) override { northbound_.setTestSwitch(on); }

  const Options options_;
  const std::chrono::steady_clock::time_point started_ = std::chrono::steady_clock::now();
  // Declared before the server, because the server's requests use them.
  const std::unique_ptr<AuditLog> audit_;  // null without --audit
  AccessControl access_;
  const PushTargets pushTargets_;
  const std::unique_ptr<RequestMetrics> requestMetrics_;
  std::unique_ptr<orb::Server> server_;
  std::unique_ptr<NetworkStore> store_;
  std::unique_ptr<NetworkSource> network_;  // null after checkedStore()
  NetworkModel model_;
  const std::string emsName_;
  EventManager events_{EventManager::kDefaultQueueLimit, [this] { notifier_.reportGap(); }};
  NetworkWriter writer_;
  const HostServices services_;
  AttributeService attributes_;
  Cancellation stopping_;
  NodeService nodes_;
  InventoryService inventory_;
  Backups backups_{writer_, std::chrono::steady_clock::now, exportLimits()};
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
  std::optional<ServedObject> session_;
  std::optional<ServedObject> console_;
  std::optional<ManagerPublication> publication_;
  std::atomic<bool> published_{false};
  std::optional<HttpEndpoint> health_;  // with --metrics
};

Agent::Agent(Options options) : options_(std::move(options)) {}

Agent::~Agent() = default;

bool Agent::start(const StopRequested& stopRequested) {
  const StopRequested stop = stopRequested ? stopRequested : [] { return false; };
  setLogLevel(options_.logLevel);
  try {
    auto parts = std::make_unique<Parts>(options_);
    if (!parts->start(options_, stop)) {
      return false;
    }
    parts_ = std::move(parts);
    log(kLogEvents, "starts to serve: version " TOPO_VERSION ", " + parts_->summary());
    return true;
  } catch (...) {
    if (!stop()) {
      throw;
    }
    return false;
  }
}

void Agent::stop() {
  log(kLogEvents, "stops");
  parts_.reset();
  log(kLogEvents, "has stopped");
}

std::string Agent::readyLine() {
  return parts_->readyLine();
}

std::string Agent::managerReference() {
  return parts_->managerReference();
}

void Agent::checkAlive() {
  parts_->checkAlive();
}

void Agent::reloadFiles() noexcept {
  try {
    parts_->reloadFiles();
  } catch (const std::exception&) {
    // Memory is short: files that were not reloaded stay in use.
  }
}

void Agent::reloadModule() {
  parts_->reloadModule();
}

}  // namespace agent
