// The command that makes a backup of the agent's store.

#ifndef CLIENT_COMMANDS_BACKUP_H
#define CLIENT_COMMANDS_BACKUP_H

#include "client/commandline/Options.h"
#include "client/output/PrintFunctions.h"
#include "orb/idl/TopoAgent.h"

namespace topoctl {

// Writes the file, and removes what there is of it when anything fails. Throws Failure: kUsage for
// a file that exists or cannot be made, kLocal for one that cannot be written.
PrintFunction backup(TopoAgent::Console_I_ptr console, const Options& options);

}  // namespace topoctl

#endif
