// The command that prints the status of the agent as docs/topoctl.md describes it.

#ifndef CLIENT_COMMANDS_STATUS_H
#define CLIENT_COMMANDS_STATUS_H

#include <iosfwd>
#include <string>

#include "client/commands/CommandContext.h"
#include "client/output/PrintFunctions.h"
#include "orb/idl/TopoAgent.h"

namespace topoctl {

// The part of the status that a client without access to the console can request.
struct PartialStatus {
  std::string missing;      // why the other fields of the status are missing
  std::string eventAccess;  // as in Status_T; "" from an agent without a session
  CORBA::ULong viewNodes = 0;
  CORBA::ULong clockNodes = 0;
  CORBA::ULong clockLinks = 0;
  CORBA::ULong capabilities = 0;
};

// Asks the console. When the agent has no console, or refuses this client with NO_PERMISSION, asks
// the manager and the session for a part of the status. Exceptions of the calls pass. Thread-safety
// of all functions: any thread.
PrintFunction status(const CommandContext& context);

void printPartialStatus(const PartialStatus& status, const OutputStyle& style, std::ostream& out);

void printStatus(const TopoAgent::Status_T& status, const OutputStyle& style, std::ostream& out);

}  // namespace topoctl

#endif
