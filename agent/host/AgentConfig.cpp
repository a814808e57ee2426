// Defines platform/agent/AgentConfig.h: registration of managers and configuration.

#include "platform/agent/AgentConfig.h"

#include "agent/host/RunningAgent.h"
#include "agent/northbound/Northbound.h"

namespace NS_CORBA {

void CorbaBaseAgentConfig::RegisterMgr(const char* name, MgrFactory* factory) {
  agent::requiredNorthbound().managers().add(name, factory);
}

void CorbaBaseAgentConfig::UnregisterMgr(const char* name) {
  agent::requiredNorthbound().managers().remove(name);
}

std::string CorbaBaseAgentConfig::EmsName() {
  const agent::Northbound* const northbound = agent::runningAgent().northbound;
  return northbound == nullptr ? std::string() : northbound->emsName();
}

// The contract gives the creation reference away even when the call fails.
void CorbaAgentConfig::RegisterServant(const char* name, POA_common::Common_I* servant) {
  PortableServer::ServantBase_var owned = servant;
  agent::ManagerRegistry& managers = agent::requiredNorthbound().managers();
  owned._retn();
  managers.serve(name, servant);
}

bool CorbaAgentConfig::GetTestSwitch() {
  const agent::Northbound* const northbound = agent::runningAgent().northbound;
  return northbound != nullptr && northbound->testSwitch();
}

}  // namespace NS_CORBA
