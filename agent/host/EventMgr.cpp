// Defines platform/event/EventMgr.h: the key functions and the instance. agent/events implements
// the event manager.

#include "platform/event/EventMgr.h"

#include "agent/host/RunningAgent.h"

TEEventHandler::~TEEventHandler() = default;
TEEventMgr::~TEEventMgr() = default;

TEEventMgr* TEEventMgr::Instance() {
  return agent::runningAgent().events;
}
