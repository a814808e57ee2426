#include "topoevent/CorbaTopoEventHandler.h"

#include "topo/Log.h"
#include "topo/Lookup.h"
#include "topoevent/TopoEventMgr.h"

namespace NS_CORBA {
namespace {

using NS_SECURITY_SERVICE1::SecurityIF;

// The identity and the level that the handler sets for the delivery thread.
constexpr const char* kAccessIdentity = "NT";
constexpr int kAccessLevel = 1;

constexpr topo::LogSite kFailedSite{"topoeventhandler", 68};
constexpr const char* kFailed = "Handle Event Fail(eventid = %d)!";
constexpr topo::LogSite kUnknownFailureSite{"topoeventhandler", 70};
constexpr const char* kUnknownFailure = "Unknown exception! (eventid = %d)!";

void takeAccess() {
  topo::lookup<SecurityIF>()->setAccessIdentity(kAccessIdentity);
  topo::lookup<SecurityIF>()->setAccessLevel(kAccessLevel);
}

void dispatch(int eventId, const std::vector<NS_DOMAIN::TopoNode_T>& nodes) {
  // Makes the instance on first use. The operations are static, so the event is handled even when
  // the instance cannot be made.
  TopoEventMgr::Instance();
  switch (eventId) {
    case EVENT_TOPO_NODE_CREATED:
      TopoEventMgr::notifyNodesCreated(nodes);
      break;
    case EVENT_TOPO_NODE_DELETED:
      TopoEventMgr::notifyNodesDeleted(nodes);
      break;
    case EVENT_TOPO_NODE_CHANGED:
      TopoEventMgr::notifyNodeLabelsChanged(nodes);
      break;
    default:
      break;
  }
}

// Drops exceptions of the log: the event manager must not see an exception.
void logFailure(const topo::LogSite& site, const char* format, int eventId) noexcept {
  try {
    topo::logFormat(site, kLogError, format, eventId);
  } catch (...) {
    // The failure of the log cannot be logged.
  }
}

}  // namespace

int CorbaTopoEventHandler::HandleEvent(int eventId, int, const TEEvent& event) {
  try {
    takeAccess();
    dispatch(eventId, event.nodes);
  } catch (ProcessException&) {
    logFailure(kFailedSite, kFailed, eventId);
  } catch (...) {
    logFailure(kUnknownFailureSite, kUnknownFailure, eventId);
  }
  return 0;
}

}  // namespace NS_CORBA
