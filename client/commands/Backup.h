// The command that copies the agent's store to a file.

#ifndef CLIENT_COMMANDS_BACKUP_H
#define CLIENT_COMMANDS_BACKUP_H

#include "client/commandline/Options.h"
#include "client/output/PrintFunctions.h"
#include "orb/idl/TopoAgent.h"

namespace topoctl {

// Writes the file of the options. A failure removes the incomplete file. Throws Failure: kUsage
// when the file exists or cannot be created, kLocal when the file cannot be written. Exceptions of
// the calls pass. Thread-safety: any thread.
PrintFunction backup(TopoAgent::Console_I_ptr console, const Options& options);

}  // namespace topoctl

#endif
