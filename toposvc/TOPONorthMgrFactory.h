// Makes servants of the manager "TopoManagement".

#ifndef TOPOSVC_TOPONORTHMGRFACTORY_H
#define TOPOSVC_TOPONORTHMGRFACTORY_H

#include "platform/agent/AgentConfig.h"

// Lives inside the manager's registration record; the agent never deletes it.
class TOPONorthMgrFactory final : public NS_CORBA::MgrFactory {
 public:
  POA_common::Common_I* create() override;
};

#endif
