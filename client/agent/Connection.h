// The ways to the agent's objects.

#ifndef CLIENT_AGENT_CONNECTION_H
#define CLIENT_AGENT_CONNECTION_H

#include <string>

#include "client/base/AgentAccess.h"
#include "orb/idl/TopoAgent.h"
#include "orb/idl/TopoManagementManager.h"
#include "orb/orb.h"

namespace topoctl {

// For the ORB through which the agent is called.
orb::Options orbOptions(const AgentAccess& access);

// "the agent at REF", or by the file that names it; for messages.
std::string describeAgent(const AgentAccess& access);

// Each of these resolves the reference that `access` names and asks the object for its type.
// Throws Failure: kUsage for a bad reference or file, kUnreachable when a naming service does not
// answer or does not know the name, kCallFailed for an object of another type; CORBA exceptions of
// the call to the agent pass.
TopoManagementManager::TopoMgr_I_var connectManager(CORBA::ORB_ptr orb, const AgentAccess& access);

// Found beside the manager, to which nothing is called. kUsage also when the reference has no
// address.
TopoAgent::Console_I_var connectConsole(CORBA::ORB_ptr orb, const AgentAccess& access);
TopoAgent::Session_I_var connectSession(CORBA::ORB_ptr orb, const AgentAccess& access);

}  // namespace topoctl

#endif
