// The command that prints the status of the agent as docs/topoctl.md describes it.

#ifndef CLIENT_COMMANDS_STATUS_H
#define CLIENT_COMMANDS_STATUS_H

#include <iosfwd>

#include "client/commandline/Options.h"
#include "client/output/PrintFunctions.h"
#include "orb/idl/TopoAgent.h"

namespace topoctl {

// Exceptions of the call pass. Thread-safety of both functions: any thread.
PrintFunction status(TopoAgent::Console_I_ptr console, const Options& options);

void printStatus(const TopoAgent::Status_T& status, const OutputStyle& style, std::ostream& out);

}  // namespace topoctl

#endif
