// The command that copies the agent's store to a file.

#ifndef CLIENT_COMMANDS_BACKUP_H
#define CLIENT_COMMANDS_BACKUP_H

#include "client/commandline/Options.h"
#include "client/output/PrintFunctions.h"
#include "orb/idl/TopoAgent.h"

namespace topoctl {

// Write a copy of the agent's store, or an export of its network, to the new file of the options. A
// failure removes the incomplete file. Throw Failure: kUsage when the file exists or cannot be
// created, kLocal when the file cannot be written. Exceptions of the calls pass. Thread-safety: any
// thread.
PrintFunction backup(TopoAgent::Console_I_ptr console, const Options& options);
PrintFunction exportNetwork(TopoAgent::Console_I_ptr console, const Options& options);

}  // namespace topoctl

#endif
