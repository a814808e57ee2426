// The agent's configuration, and the registration of managers and their servants. Texts are UTF-8.
//
// The module's init makes these calls, in this order:
//   1. UnregisterMgr("TopoManagement"): an earlier load may have left the name. At the first load
//      the name does not exist. Every exception is dropped.
//   2. RegisterMgr("TopoManagement", factory).
//   3. RegisterServant("TopoManagement", servant), with a servant that the module makes itself.
//   4. Subscribe (EventMgr.h), then GetTestSwitch.
// An exception of step 2, of step 3 (also of the log, when the servant is made) or of GetTestSwitch
// leaves init, and nothing is undone. fini calls UnregisterMgr and drops every exception. The
// module never unregisters a servant: before the module is unloaded, the host deactivates the
// servant and drops its reference.
//
// Thread-safety: EmsName and GetTestSwitch may be called on any thread; the registration functions
// only on the bundle manager's thread.
//
// Ownership: both Instance() functions return an object of the host, never null, valid for the
// life of the process.

#ifndef PLATFORM_AGENT_AGENTCONFIG_H
#define PLATFORM_AGENT_AGENTCONFIG_H

#include <string>

#include "orb/idl/common.h"
#include "platform/framework/Export.h"
#include "platform/framework/ProcessException.h"

namespace NS_CORBA {

// Makes a servant of a manager each time the agent needs a new servant. The module implements the
// factory.
//
// Thread-safety: the agent may call create on any thread. Ownership: the caller of RegisterMgr owns
// the factory; the agent never deletes the factory. Errors: see create. The host defines the
// destructor (key function, see framework/ProcessException.h).
class PLATFORM_API MgrFactory {
 public:
  // Returns a new servant with one reference, which the caller owns. The agent may call create
  // between the return of RegisterMgr and the call of UnregisterMgr, for a servant in addition to
  // that of RegisterServant. An agent need not call create.
  // When memory for the servant is short, returns null and sets errno to ENOMEM. May raise:
  // exceptions of the log and std::bad_alloc.
  virtual POA_common::Common_I* create() = 0;
  virtual ~MgrFactory();
};

// The registered managers, and the name of the managing system.
//
// Thread-safety and ownership: see above. Errors: see each function.
class PLATFORM_API CorbaBaseAgentConfig {
 public:
  // May raise: anything during init and fini. Must not raise anything but CORBA exceptions during a
  // request: ends the process. A client triggers the call with
  // getAllClockSourceViewlTopologicalLinks.
  static CorbaBaseAgentConfig* Instance();

  // Registers a manager under a name. The agent borrows the factory until UnregisterMgr returns, or
  // until the init that registered the factory fails: after a failed init the agent must not call
  // the factory again. After an exception the agent must not keep the factory.
  // May raise: ProcessException when the name is in use, and anything else; init fails with the
  // exception.
  void RegisterMgr(const char* name, MgrFactory* factory);

  // Removes a manager. May raise: ProcessException when no manager has the name, and anything else;
  // init and fini drop the exception.
  void UnregisterMgr(const char* name);

  // The name of the managing system: the value of the "EMS" pair in every TMF name.
  // Must not raise anything but CORBA exceptions: ends the process. A client triggers the call with
  // getAllClockSourceViewlTopologicalLinks, when the network has a clock link.
  std::string EmsName();
};

// The registered servants, and the test switch.
//
// Thread-safety and ownership: see above. Errors: see each function.
class PLATFORM_API CorbaAgentConfig {
 public:
  // May raise: anything during init. During a request and during an event: as GetTestSwitch.
  static CorbaAgentConfig* Instance();

  // Serves a servant as the manager of this name. While an earlier servant of the name is active,
  // the agent deactivates the earlier servant first. When the new servant cannot be served, the
  // earlier servant need not be restored. The agent takes over the creation reference of the
  // servant, also when the call fails: an agent that refuses the servant drops the reference. The
  // servant is null when memory was short.
  // May raise: ProcessException when the servant is null or cannot be served, and anything else;
  // init fails with the exception, and the manager stays registered.
  void RegisterServant(const char* name, POA_common::Common_I* servant);

  // Whether the agent is in test mode now. The test switch may change at any time, so callers do
  // not cache the result.
  // May raise: anything during init and during an event. Must not raise anything but CORBA
  // exceptions during a request: ends the process. A client triggers the call with every view of
  // topology nodes.
  bool GetTestSwitch();
};

}  // namespace NS_CORBA

#endif
