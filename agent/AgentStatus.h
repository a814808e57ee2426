// The status of the agent for the console.

#ifndef AGENT_AGENTSTATUS_H
#define AGENT_AGENTSTATUS_H

#include "agent/ModuleControl.h"
#include "agent/events/EventManager.h"
#include "agent/model/NetworkModel.h"
#include "agent/northbound/Northbound.h"
#include "agent/notifications/Notifier.h"
#include "orb/idl/TopoAgent.h"

namespace agent {

// Borrowed for the call.
struct StatusSources {
  const ModuleControl& module;
  const NetworkModel& model;
  const EventManager& events;
  Northbound& northbound;
  Notifier& notifier;
};

// A snapshot; the sources are read one after the other. Thread-safety: any thread.
TopoAgent::Status_T agentStatus(const StatusSources& sources);

}  // namespace agent

#endif
