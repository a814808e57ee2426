// Makes servants of the manager "TopoManagement".

#ifndef TOPOSVC_TOPONORTHMGRFACTORY_H
#define TOPOSVC_TOPONORTHMGRFACTORY_H

#include "platform/agent/AgentConfig.h"

// Thread-safety: any thread; no state. Ownership: part of the registration record of the service
// object; the agent borrows the factory. Errors: see MgrFactory::create.
class TOPONorthMgrFactory final : public NS_CORBA::MgrFactory {
 public:
  POA_common::Common_I* create() override;
};

#endif
