#include "agent/AgentMetrics.h"

#include <chrono>
#include <cstddef>
#include <iterator>
#include <utility>

#include "agent/process/ProcessUse.h"

namespace agent {
namespace {

// After this time without a change, a store that has failed may be usable again.
constexpr std::chrono::seconds kStoreSuspicion{60};

void append(MetricFamilies& families, MetricFamilies more) {
  families.insert(families.end(), std::make_move_iterator(more.begin()),
                  std::make_move_iterator(more.end()));
}

template <typename Number>
double number(Number value) {
  return static_cast<double>(value);
}

MetricFamilies processMetrics() {
  const ProcessUse use = processUse();
  return {
      gauge("process_resident_memory_bytes", "Resident memory of the process.",
            number(use.residentBytes)),
      gauge("process_virtual_memory_bytes", "Address space of the process.",
            number(use.addressBytes)),
      gauge("process_threads", "Threads of the process.", number(use.threads)),
      gauge("process_open_fds", "Open file descriptors.", number(use.descriptors)),
      gauge("process_max_fds", "The limit of open file descriptors.", number(use.descriptorLimit)),
      counter("process_cpu_seconds_total", "Processor time of the process.", use.cpuSeconds)};
}

MetricFamilies moduleMetrics(const ModuleControl& module) {
  prometheus::MetricFamily build =
      gaugeFamily("topo_build_info", "Versions of the agent and of its module; always 1.");
  addMetric(build, {{"version", TOPO_VERSION}, {"module_version", module.version()}}, 1);
  prometheus::MetricFamily state =
      gaugeFamily("topo_module_state", "1 for the present state of the module, 0 for the others.");
  const std::pair<const char*, ModuleControl::State> states[] = {
      {"loaded", ModuleControl::State::kLoaded},
      {"reloading", ModuleControl::State::kReloading},
      {"missing", ModuleControl::State::kMissing}};
  const ModuleControl::State present = module.state();
  for (const auto& [name, value] : states) {
    addMetric(state, {{"state", name}}, value == present ? 1 : 0);
  }
  return {std::move(build), std::move(state),
          counter("topo_module_loads_total", "Successful loads of the module.",
                  number(module.loads()))};
}

MetricFamilies viewMetrics(Northbound& northbound) {
  prometheus::MetricFamily inProgress =
      gaugeFamily("topo_views_in_progress", "Admitted requests whose reply was not sent yet.");
  prometheus::MetricFamily waiting =
      gaugeFamily("topo_views_waiting", "Requests that wait for their admission.");
  prometheus::MetricFamily bytes =
      gaugeFamily("topo_views_memory_bytes", "Estimated memory of the requests in progress.");
  prometheus::MetricFamily refused =
      counterFamily("topo_views_refused_total", "Requests that admission answered NO_RESOURCES.");
  const std::pair<const char*, ViewAdmission::Load> loads[] = {
      {"view", northbound.views()}, {"additional_information", northbound.informationRequests()}};
  for (const auto& [kind, load] : loads) {
    addMetric(inProgress, {{"kind", kind}}, number(load.inProgress));
    addMetric(waiting, {{"kind", kind}}, number(load.waiting));
    addMetric(bytes, {{"kind", kind}}, number(load.bytes));
    addMetric(refused, {{"kind", kind}}, number(load.refused));
  }
  IteratorRegistry& iterators = northbound.iterators();
  return {std::move(inProgress),
          std::move(waiting),
          std::move(bytes),
          std::move(refused),
          gauge("topo_iterators", "Iterators.", number(iterators.size())),
          gauge("topo_iterators_memory_bytes", "Estimated memory of the records in iterators.",
                number(iterators.bytes())),
          counter("topo_iterators_ended_total", "Iterators that have ended.",
                  number(iterators.ended()))};
}

// The families of receivers, with a metric for each kind of receiver.
MetricFamilies receiverMetrics(const NotifierLoad& notifier) {
  prometheus::MetricFamily receivers = gaugeFamily("topo_receivers", "Receivers of notifications.");
  prometheus::MetricFamily connected =
      gaugeFamily("topo_receivers_connected", "Receivers that are reachable.");
  prometheus::MetricFamily queued = gaugeFamily("topo_receiver_queue_notifications",
                                                "Notifications in the queues of all receivers.");
  prometheus::MetricFamily longest = gaugeFamily("topo_receiver_queue_longest_notifications",
                                                 "Notifications in the longest queue.");
  prometheus::MetricFamily bytes =
      gaugeFamily("topo_receiver_queue_bytes", "Estimated memory of the queues of all receivers.");
  prometheus::MetricFamily sent =
      counterFamily("topo_notifications_sent_total", "Notifications that receivers have accepted.");
  prometheus::MetricFamily lost =
      counterFamily("topo_notifications_lost_total", "Notifications in gaps of receivers.");
  const std::pair<const char*, const ReceiversLoad&> loads[] = {
      {"subscriber", notifier.subscribers}, {"channel", notifier.channel}};
  for (const auto& [kind, load] : loads) {
    const MetricLabels labels = {{"kind", kind}};
    addMetric(receivers, labels, number(load.receivers));
    addMetric(connected, labels, number(load.connected));
    addMetric(queued, labels, number(load.queued));
    addMetric(longest, labels, number(load.longest));
    addMetric(bytes, labels, number(load.bytes));
    addMetric(sent, labels, number(load.sent));
    addMetric(lost, labels, number(load.lost));
  }
  return {std::move(receivers), std::move(connected), std::move(queued), std::move(longest),
          std::move(bytes),     std::move(sent),      std::move(lost)};
}

MetricFamilies notificationMetrics(Notifier& notifier) {
  const NotifierLoad load = notifier.load();
  MetricFamilies families = receiverMetrics(load);
  append(
      families,
      {counter("topo_notifications_total", "Notifications made.", number(load.notifications)),
       counter("topo_gaps_total", "Gaps that were reported to all receivers.", number(load.gaps)),
       counter("topo_subscribers_dropped_total", "Subscribers that the agent has dropped.",
               number(load.subscribersDropped))});
  return families;
}

MetricFamilies eventMetrics(const EventManager& events) {
  const EventManager::Status status = events.status();
  return {gauge("topo_events_queued", "Platform events in the queues of the module.",
                number(status.queued)),
          counter("topo_events_delivered_total", "Platform events that the module has handled.",
                  number(status.delivered)),
          counter("topo_events_failed_total", "Platform events whose handler has thrown.",
                  number(status.failed)),
          counter("topo_events_dropped_total", "Platform events evicted from full queues.",
                  number(status.dropped))};
}

}  // namespace

MetricFamilies agentMetrics(const MetricSources& sources) {
  MetricFamilies families = processMetrics();
  append(families, moduleMetrics(sources.module));
  append(families, {gauge("topo_connections", "Open incoming connections.",
                          number(sources.server.openConnections())),
                    gauge("topo_nodes", "Topology nodes of the network.",
                          number(sources.model.topoNodeCount())),
                    counter("topo_audit_lost_total",
                            "Changes, failures and refusals without a line in the audit log.",
                            number(sources.auditLost)),
                    counter("topo_store_errors_total", "Failed calls of the store.",
                            number(sources.writer.storeFailures().count))});
  append(families, viewMetrics(sources.northbound));
  append(families, notificationMetrics(sources.notifier));
  append(families, eventMetrics(sources.events));
  return families;
}

std::string reasonNotReady(const ModuleControl& module, const NetworkWriter& writer) {
  if (module.state() != ModuleControl::State::kLoaded) {
    return "the module is not loaded";
  }
  const auto failed = writer.storeFailures().commitFailed;
  if (failed && std::chrono::steady_clock::now() - *failed < kStoreSuspicion) {
    return "the store has failed";
  }
  return "";
}

}  // namespace agent
