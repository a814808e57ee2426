#include "agent/AgentStatus.h"

namespace agent {
namespace {

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

TopoAgent::EventAccess_T tmfAccess(EventAccess access) {
  switch (access) {
    case EventAccess::kAllowed:
      return TopoAgent::EA_ALLOWED;
    case EventAccess::kDenied:
      return TopoAgent::EA_DENIED;
    case EventAccess::kUnknown:
      break;
  }
  return TopoAgent::EA_UNKNOWN;
}

TopoAgent::Status_T agentStatus(const StatusSources& sources) {
  TopoAgent::Status_T status;
  const auto uptime = std::chrono::duration_cast<std::chrono::seconds>(sources.uptime);
  status.agentVersion = TOPO_VERSION;
  status.moduleVersion = sources.module.version().c_str();
  status.uptimeSeconds = static_cast<CORBA::ULongLong>(uptime.count());
  status.store = sources.options.store.c_str();
  status.emsName = sources.emsName.c_str();
  status.lastReloadError = sources.module.lastReloadError().c_str();
  status.eventAccess = tmfAccess(sources.options.eventAccess);
  status.moduleState = tmfState(sources.module.state());
  status.moduleLoads = sources.module.loads();
  status.testSwitch = sources.northbound.testSwitch();
  status.topoNodes = static_cast<CORBA::ULong>(sources.model.topoNodeCount());
  status.viewNodes =
      static_cast<CORBA::ULong>(sources.viewSizes.topologyRecords(status.testSwitch));
  status.iterators = static_cast<CORBA::ULong>(sources.northbound.iterators().size());
  const EventManager::Status events = sources.events.status();
  status.subscriptions = static_cast<CORBA::ULong>(events.subscriptions);
  status.eventsQueued = static_cast<CORBA::ULong>(events.queued);
  status.eventsDropped = events.dropped;
  const NotifierStatus notifier = sources.notifier.status();
  status.notifications = notifier.notifications;
  status.subscribersDropped = notifier.subscribersDropped;
  status.receivers = notifier.receivers;
  status.auditLost = sources.audit.lost;
  status.auditFailure = sources.audit.failure.c_str();
  return status;
}

}  // namespace agent
