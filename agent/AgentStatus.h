// The status of the agent for the console.

#ifndef AGENT_AGENTSTATUS_H
#define AGENT_AGENTSTATUS_H

#include <chrono>
#include <string>

#include "agent/ModuleControl.h"
#include "agent/Options.h"
#include "agent/access/AuditLog.h"
#include "agent/events/EventManager.h"
#include "agent/host/EventAccess.h"
#include "agent/model/NetworkModel.h"
#include "agent/northbound/Northbound.h"
#include "agent/northbound/ViewSizes.h"
#include "agent/notifications/Notifier.h"
#include "orb/idl/TopoAgent.h"

namespace agent {

// The parts of the agent whose state the status reports; borrowed for the call.
struct StatusSources {
  const Options& options;
  const std::string& emsName;
  std::chrono::steady_clock::duration uptime;
  const ModuleControl& module;
  const NetworkModel& model;
  ViewSizes& viewSizes;
  const EventManager& events;
  Northbound& northbound;
  Notifier& notifier;
  AuditStatus audit;
};

// The access to events in the form that session and console report. Thread-safety: any thread.
TopoAgent::EventAccess_T tmfAccess(EventAccess access);

// A snapshot; the sources are read one after the other. Thread-safety: any thread.
TopoAgent::Status_T agentStatus(const StatusSources& sources);

}  // namespace agent

#endif
