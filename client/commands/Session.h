// What a command works with, and what it leaves behind.

#ifndef CLIENT_COMMANDS_SESSION_H
#define CLIENT_COMMANDS_SESSION_H

#include <functional>
#include <iosfwd>

#include "client/agent/Fetch.h"
#include "client/commandline/Options.h"
#include "orb/idl/TopoManagementManager.h"

namespace topoctl {

// Everything is borrowed for the run.
struct Session {
  TopoManagementManager::TopoMgr_I_ptr manager;
  const Options& options;
  const ProgressFunction& progress;
};

// Prints what a command's calls delivered. All calls are made before, so that a failure leaves no
// partial output.
using PrintFunction = std::function<void(std::ostream&)>;

}  // namespace topoctl

#endif
