// The command that shows how the agent is; docs/topoctl.md describes what it prints.

#ifndef CLIENT_COMMANDS_STATUS_H
#define CLIENT_COMMANDS_STATUS_H

#include <iosfwd>

#include "client/commandline/Options.h"
#include "client/output/PrintFunctions.h"
#include "orb/idl/TopoAgent.h"

namespace topoctl {

PrintFunction status(TopoAgent::Console_I_ptr console, const Options& options);

void printStatus(const TopoAgent::Status_T& status, Format format, std::ostream& out);

}  // namespace topoctl

#endif
