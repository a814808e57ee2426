// Resolves the references to the agent's objects. Thread-safety of all functions: any thread.

#ifndef CLIENT_AGENT_CONNECTION_H
#define CLIENT_AGENT_CONNECTION_H

#include <string>

#include "client/base/AgentAccess.h"
#include "orb/idl/TopoAgent.h"
#include "orb/idl/TopoManagementManager.h"
#include "orb/orb.h"

namespace topoctl {

// The options of an ORB that calls the agent.
orb::Options orbOptions(const AgentAccess& access);

// "the agent at 'REF'" or "the agent of the IOR file 'PATH'", for messages.
std::string describeAgent(const AgentAccess& access);

// The connect functions resolve the reference of `access`, ask the object for its type and return a
// reference that the caller owns. They throw Failure: kUsage for a malformed reference or an
// unreadable file, kUnreachable when a naming service does not answer or does not know the name,
// kCallFailed for an object of another type. CORBA exceptions of the call to the agent pass.
TopoManagementManager::TopoMgr_I_var connectManager(CORBA::ORB_ptr orb, const AgentAccess& access);

// The console and the session have keys of their own on the first address of the manager's
// reference; the manager itself is not called. A reference without an address is kUsage, too.
TopoAgent::Console_I_var connectConsole(CORBA::ORB_ptr orb, const AgentAccess& access);
TopoAgent::Session_I_var connectSession(CORBA::ORB_ptr orb, const AgentAccess& access);

}  // namespace topoctl

#endif
