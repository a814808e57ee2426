// The ids of the agent's objects, for the completion.

#ifndef CLIENT_COMMANDS_OBJECTIDS_H
#define CLIENT_COMMANDS_OBJECTIDS_H

#include <set>
#include <string>

#include "client/base/AgentAccess.h"
#include "client/commandline/CommandSyntax.h"
#include "orb/orb.h"

namespace topoctl {

// Returns the ids of the records that the first reply of the agent has, at most access.howMany of a
// view; empty for values that are not objects of the agent. Exceptions of the calls pass.
// Thread-safety: any thread.
std::set<std::string> objectIds(CORBA::ORB_ptr orb, const AgentAccess& access, Values values);

}  // namespace topoctl

#endif
