// Defines platform/event/EventMgr.h: the instance. agent/events implements the event manager.

#include "platform/event/EventMgr.h"

#include "agent/host/RunningAgent.h"

TEEventMgr* TEEventMgr::Instance() {
  return agent::runningAgent().events;
}
