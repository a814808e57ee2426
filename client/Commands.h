// What topoctl can do: one row a command.

#ifndef CLIENT_COMMANDS_H
#define CLIENT_COMMANDS_H

#include <iosfwd>
#include <string>
#include <vector>

#include "client/Fetch.h"
#include "client/Options.h"
#include "orb/idl/TopoManagementManager.h"

namespace topoctl {

// What a command works with. Everything is borrowed for the run.
struct Session {
  TopoManagementManager::TopoMgr_I_ptr manager;
  const Options& options;
  const ProgressFunction& progress;
};

// Makes all calls of a command before anything is printed, so that a failure leaves no partial
// output. Exceptions of the calls pass.
using PrintFunction = std::function<void(std::ostream&)>;

struct Command {
  const char* name;
  const char* help;
  PrintFunction (*run)(const Session&);
};

const std::vector<Command>& commands();

// REQUIRES: there is a command of that name.
const Command& commandNamed(const std::string& name);

}  // namespace topoctl

#endif
