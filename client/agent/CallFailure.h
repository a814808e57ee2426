// Translates any exception of a run into a Failure; the one place that does.

#ifndef CLIENT_AGENT_CALLFAILURE_H
#define CLIENT_AGENT_CALLFAILURE_H

#include "client/base/AgentAccess.h"
#include "client/base/Failure.h"

namespace topoctl {

// The failure that is being handled, whatever was thrown. REQUIRES: called in a catch block.
Failure currentFailure(const AgentAccess& access);

}  // namespace topoctl

#endif
