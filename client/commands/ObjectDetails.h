// The command that prints everything that the agent stores about an object. docs/topoctl.md
// describes the output.

#ifndef CLIENT_COMMANDS_OBJECTDETAILS_H
#define CLIENT_COMMANDS_OBJECTDETAILS_H

#include <iosfwd>

#include "client/commandline/Options.h"
#include "client/output/PrintFunctions.h"
#include "orb/idl/TopoAgent.h"

namespace topoctl {

// Exceptions of the call pass. Thread-safety of both functions: any thread.
PrintFunction getObject(TopoAgent::Console_I_ptr console, const Options& options);

void printDetails(const TopoAgent::ObjectDetails_T& details, const OutputStyle& style,
                  std::ostream& out);

}  // namespace topoctl

#endif
