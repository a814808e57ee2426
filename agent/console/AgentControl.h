// The agent as its console sees it.

#ifndef AGENT_CONSOLE_AGENTCONTROL_H
#define AGENT_CONSOLE_AGENTCONTROL_H

#include "orb/idl/TopoAgent.h"

namespace agent {

// Thread-safety: any thread.
class AgentControl {
 public:
  virtual TopoAgent::Status_T status() = 0;

  virtual void setTestSwitch(bool on) = 0;

  // Takes the module out and puts it in again; one reload after another. Throws a std::exception
  // whose text is one line, or a CORBA exception, when that fails. Not from within a request to the
  // manager or an iterator.
  virtual void reloadModule() = 0;

 protected:
  ~AgentControl() = default;
};

}  // namespace agent

#endif
