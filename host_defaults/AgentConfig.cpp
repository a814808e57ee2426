// Defines the instances of platform/agent/AgentConfig.h, which have no state.

#include "platform/agent/AgentConfig.h"

namespace NS_CORBA {

CorbaBaseAgentConfig* CorbaBaseAgentConfig::Instance() {
  static CorbaBaseAgentConfig instance;
  return &instance;
}

CorbaAgentConfig* CorbaAgentConfig::Instance() {
  static CorbaAgentConfig instance;
  return &instance;
}

}  // namespace NS_CORBA
