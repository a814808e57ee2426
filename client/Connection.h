// The way to the agent's manager object.

#ifndef CLIENT_CONNECTION_H
#define CLIENT_CONNECTION_H

#include <string>

#include "client/Options.h"
#include "orb/idl/TopoManagementManager.h"
#include "orb/orb.h"

namespace topoctl {

// "the agent at REF", or by the file that names it; for messages.
std::string describeAgent(const Options& options);

// Resolves the reference that the options name and asks the object there whether it is a TopoMgr_I.
// Throws Failure: kUsage for a bad reference or file, kUnreachable when a naming service does not
// answer or does not know the name, kCallFailed for an object of another type; CORBA exceptions of
// the call to the agent pass.
TopoManagementManager::TopoMgr_I_var connect(CORBA::ORB_ptr orb, const Options& options);

}  // namespace topoctl

#endif
