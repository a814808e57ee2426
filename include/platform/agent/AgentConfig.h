// The agent's configuration, and the registration of managers and their servants.
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

namespace NS_CORBA {

// Makes a servant of a manager each time the agent needs a new servant.
//
// Thread-safety: the agent may call create on any thread. Ownership: the caller of RegisterMgr owns
// the factory; the agent never deletes the factory. Errors: create returns null. The host defines
// the destructor (key function, see framework/ProcessException.h).
class PLATFORM_API MgrFactory {
 public:
  // Returns a new servant with one reference, which the caller owns. When memory is short, returns
  // null and sets errno to ENOMEM.
  virtual POA_common::Common_I* create() = 0;
  virtual ~MgrFactory();
};

// The registered managers, and the name of the managing system.
//
// Thread-safety and ownership: see above. Errors: ProcessException, see each function; every
// function may throw std::bad_alloc.
class PLATFORM_API CorbaBaseAgentConfig {
 public:
  static CorbaBaseAgentConfig* Instance();

  // Registers a manager under a name. The agent borrows the factory until UnregisterMgr returns, or
  // until the init that registered the factory fails: after a failed init the agent must not call
  // the factory again. Throws ProcessException when the name is in use.
  void RegisterMgr(const char* name, MgrFactory* factory);

  // Removes a manager. Throws ProcessException when no manager has the name.
  void UnregisterMgr(const char* name);

  // The name of the managing system: the value of the "EMS" pair in every TMF name.
  std::string EmsName();
};

// The registered servants, and the test switch.
//
// Thread-safety and ownership: see above. Errors: RegisterServant throws ProcessException; every
// function may throw std::bad_alloc.
class PLATFORM_API CorbaAgentConfig {
 public:
  static CorbaAgentConfig* Instance();

  // Serves a servant as the manager of this name. The agent takes over the creation reference of
  // the servant, also when the call fails. Throws ProcessException when the servant is null or
  // cannot be served.
  void RegisterServant(const char* name, POA_common::Common_I* servant);

  // Whether the agent is in test mode now. The test switch may change at any time, so callers do
  // not cache the result.
  bool GetTestSwitch();
};

}  // namespace NS_CORBA

#endif
