// The interface through which the console controls the agent.

#ifndef AGENT_CONSOLE_AGENTCONTROL_H
#define AGENT_CONSOLE_AGENTCONTROL_H

#include "orb/idl/TopoAgent.h"

namespace agent {

// Thread-safety: any thread.
// Ownership: borrowed; users never destroy an AgentControl.
// Errors: every function may throw std::exceptions, whose text is one line, and CORBA exceptions.
class AgentControl {
 public:
  virtual TopoAgent::Status_T status() = 0;

  virtual void setTestSwitch(bool on) = 0;

  // Unloads and loads the module. Concurrent reloads run one after the other. REQUIRES: not called
  // within a request to a manager or an iterator.
  virtual void reloadModule() = 0;

 protected:
  ~AgentControl() = default;
};

}  // namespace agent

#endif
