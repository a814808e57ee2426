// The commands for the agent's console, apart from that for its status.

#ifndef CLIENT_COMMANDS_CONSOLECOMMANDS_H
#define CLIENT_COMMANDS_CONSOLECOMMANDS_H

#include "client/commandline/Options.h"
#include "client/commands/Session.h"
#include "orb/idl/TopoAgent.h"

namespace topoctl {

PrintFunction createNode(TopoAgent::Console_I_ptr console, const Options& options);
PrintFunction deleteNode(TopoAgent::Console_I_ptr console, const Options& options);
PrintFunction renameNode(TopoAgent::Console_I_ptr console, const Options& options);

// Throws Failure: kUsage for a file that cannot be read, kCallFailed for one over the size limit.
PrintFunction importNetwork(TopoAgent::Console_I_ptr console, const Options& options);

PrintFunction setTestSwitch(TopoAgent::Console_I_ptr console, const Options& options);
PrintFunction reloadModule(TopoAgent::Console_I_ptr console, const Options& options);

}  // namespace topoctl

#endif
