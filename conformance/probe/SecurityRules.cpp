#include "platform/security/SecurityIF.h"

#include "conformance/probe/Calls.h"
#include "conformance/probe/RecordingHandler.h"
#include "conformance/probe/Rules.h"

namespace conformance::probe {

void securityServiceAnswers() {
  auto* const security = published<NS_SECURITY_SERVICE1::SecurityIF>("SecurityIF");
  if (security == nullptr) {
    throw Skipped("no SecurityIF is published: the module works without events");
  }
  try {
    security->isEventAccessAllowed();
    security->setAccessIdentity("NT");
    security->setAccessLevel(1);
  } catch (...) {
    // The module then works without events.
  }
}

bool eventsAreAllowed() {
  try {
    auto* const security = published<NS_SECURITY_SERVICE1::SecurityIF>("SecurityIF");
    return security != nullptr && security->isEventAccessAllowed() &&
           TEEventMgr::Instance() != nullptr;
  } catch (...) {
    return false;  // the module then works without events
  }
}

void unknownSubscriptionsAreIgnored() {
  TEEventMgr* const events = quietly("TEEventMgr::Instance", [] { return TEEventMgr::Instance(); });
  if (events == nullptr) {
    throw Skipped("the host has no event manager");
  }
  RecordingHandler handler;
  quietly("UnSubscribe", [&] { events->UnSubscribe(&handler, EVENT_TOPO_NODE_CREATED); });
}

}  // namespace conformance::probe
