// The checks that topo-conformance makes as a client and as the operator of a host.

#ifndef CONFORMANCE_CHECK_H
#define CONFORMANCE_CHECK_H

#include <chrono>
#include <string>
#include <vector>

#include "conformance/Host.h"
#include "conformance/Receiver.h"
#include "conformance/shared/Verdict.h"
#include "orb/orb.h"

namespace conformance {

// The host and the tools that a check uses. Borrowed for the run.
struct Context {
  Host& host;
  Receiver& receiver;
  orb::Server& server;
  std::chrono::milliseconds timeout;  // of each step
  std::string failInitFile;           // while the file exists, the init of the probe fails
  bool refusesEvents = false;         // a check has found that the module receives no events
  bool lacksConsumer = false;         // a check has found no way for notifications to arrive

  TopoManagementManager::TopoMgr_I_ptr manager() const { return host.manager(); }
};

// The check of one rule. `run` throws Broken, Skipped, or the exception of a call that must not
// fail.
struct Check {
  const char* rule;
  const char* text;
  Plugin plugin;  // which plug-in the host has loaded
  void (*run)(Context& context);
};

// All checks of this program in their order: first those with the module, then those with the
// probe. The rules that the probe checks itself are in probe/Rules.h.
const std::vector<Check>& checks();

}  // namespace conformance

#endif
