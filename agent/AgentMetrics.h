// The metrics and the health of the agent, for its HTTP endpoint.

#ifndef AGENT_AGENTMETRICS_H
#define AGENT_AGENTMETRICS_H

#include <cstdint>
#include <string>

#include "agent/ModuleControl.h"
#include "agent/changes/NetworkWriter.h"
#include "agent/events/EventManager.h"
#include "agent/metrics/MetricFamilies.h"
#include "agent/model/NetworkModel.h"
#include "agent/northbound/Northbound.h"
#include "agent/notifications/Notifier.h"
#include "orb/orb.h"

namespace agent {

// The parts of the agent whose state the metrics report; borrowed for the call.
struct MetricSources {
  orb::Server& server;
  const ModuleControl& module;
  const NetworkModel& model;
  const NetworkWriter& writer;
  const EventManager& events;
  Northbound& northbound;
  Notifier& notifier;
  std::uint64_t auditLost = 0;  // AuditStatus::lost
};

// A snapshot of everything but the requests; the sources are read one after the other. Waits for no
// change and no view. Thread-safety: any thread. Errors: std::bad_alloc.
MetricFamilies agentMetrics(const MetricSources& sources);

// The reason why the agent cannot serve requests now, in one line; "" when it can: the module is
// loaded, and no commit to the store has failed in the last minute without a later success.
// Thread-safety: any thread. Errors: std::bad_alloc.
std::string reasonNotReady(const ModuleControl& module, const NetworkWriter& writer);

}  // namespace agent

#endif
