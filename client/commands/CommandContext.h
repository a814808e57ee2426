// The parameters of the functions that run commands.

#ifndef CLIENT_COMMANDS_COMMANDCONTEXT_H
#define CLIENT_COMMANDS_COMMANDCONTEXT_H

#include "client/agent/Fetch.h"
#include "client/agent/Reload.h"
#include "client/commandline/Options.h"
#include "client/output/PrintFunctions.h"
#include "orb/idl/TopoManagementManager.h"
#include "orb/orb.h"

namespace topoctl {

// For any command. Borrows everything for the run.
struct CommandContext {
  CORBA::ORB_ptr orb;
  const Options& options;
  const ProgressFunction& progress;
  const RetryPolicy& retry;  // of calls to the manager
};

// For a command that calls the manager. Borrows everything for the run.
struct ManagerContext {
  TopoManagementManager::TopoMgr_I_ptr manager;
  const Options& options;
  const ProgressFunction& progress;
};

}  // namespace topoctl

#endif
