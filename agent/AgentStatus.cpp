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

TopoAgent::Status_T agentStatus(const StatusSources& sources) {
  TopoAgent::Status_T status;
  status.moduleState = tmfState(sources.module.state());
  status.moduleLoads = sources.module.loads();
  status.testSwitch = sources.northbound.testSwitch();
  status.topoNodes = static_cast<CORBA::ULong>(sources.model.topoNodeCount());
  status.iterators = static_cast<CORBA::ULong>(sources.northbound.iterators().size());
  const EventManager::Status events = sources.events.status();
  status.subscriptions = static_cast<CORBA::ULong>(events.subscriptions);
  status.eventsQueued = static_cast<CORBA::ULong>(events.queued);
  status.eventsDropped = events.dropped;
  const NotifierStatus notifier = sources.notifier.status();
  status.notifications = notifier.notifications;
  status.subscribersDropped = notifier.subscribersDropped;
  status.receivers = notifier.receivers;
  return status;
}

}  // namespace agent
