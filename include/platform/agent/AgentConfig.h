// Configuration of the agent and registration of managers.
//
// Thread-safety: EmsName and GetTestSwitch from any thread; registration from the bundle manager's
// thread.

#ifndef PLATFORM_AGENT_AGENTCONFIG_H
#define PLATFORM_AGENT_AGENTCONFIG_H

#include <string>

#include "orb/idl/common.h"
#include "platform/framework/Export.h"

namespace NS_CORBA {

// Makes the servant of a manager whenever the agent wants a new one.
//
// The host defines the destructor (key function, see framework/ProcessException.h).
class PLATFORM_API MgrFactory {
 public:
  // A new servant with one reference, owned by the caller; null, with errno ENOMEM, when memory is
  // short.
  virtual POA_common::Common_I* create() = 0;
  virtual ~MgrFactory();
};

class PLATFORM_API CorbaBaseAgentConfig {
 public:
  static CorbaBaseAgentConfig* Instance();

  // Makes a manager known. The factory stays owned by the caller, who keeps it until UnregisterMgr
  // or until its own init fails: after a failed init the agent must not call it any more. The agent
  // never deletes it. Throws ProcessException when the name is taken.
  void RegisterMgr(const char* name, MgrFactory* factory);

  // Forgets a manager. Throws ProcessException when there is none of that name.
  void UnregisterMgr(const char* name);

  // The name of the managing system, the value of the "EMS" pair of every TMF name.
  std::string EmsName();
};

class PLATFORM_API CorbaAgentConfig {
 public:
  static CorbaAgentConfig* Instance();

  // Hands over a manager's servant; the agent owns its creation reference from here, whatever comes
  // of it, and serves it. Throws ProcessException when the servant is null or cannot be served.
  void RegisterServant(const char* name, POA_common::Common_I* servant);

  // Whether the agent runs in test mode, as of now: it may change at any time.
  bool GetTestSwitch();
};

}  // namespace NS_CORBA

#endif
