// The only place where exceptions of calls become exit codes and texts.

#ifndef CLIENT_AGENT_CALLFAILURE_H
#define CLIENT_AGENT_CALLFAILURE_H

#include "client/base/AgentAccess.h"
#include "client/base/Failure.h"

namespace topoctl {

// Returns the Failure for the exception of any type that is being handled. `access` is for the
// text.
//
// REQUIRES: called in a catch block. Thread-safety: any thread.
Failure currentFailure(const AgentAccess& access);

}  // namespace topoctl

#endif
