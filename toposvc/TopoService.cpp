#include "toposvc/TopoService.h"

#include <cerrno>
#include <memory>
#include <new>

#include "platform/agent/AgentConfig.h"
#include "topomanagementmgrimpl/TATopoManagementMgr_IImpl.h"
#include "toposvc/RefCount.h"
#include "toposvc/TOPONorthMgrFactory.h"

namespace {

using NS_CORBA::CorbaAgentConfig;
using NS_CORBA::CorbaBaseAgentConfig;
using NS_CORBA::RefCount;
using NS_CORBA::TATopoManagementMgr_IImpl;

// What the agent knows of the manager while it is registered.
struct MgrRegistration {
  const char* name = "TopoManagement";
  TOPONorthMgrFactory factory;
};

// The record of the present registration, null while there is none.
std::unique_ptr<MgrRegistration> registration;

// The creation reference is the caller's. Null, with errno ENOMEM, when memory is short.
POA_common::Common_I* makeServant() {
  auto* servant = new (std::nothrow) RefCount<TATopoManagementMgr_IImpl>;
  if (servant == nullptr) {
    errno = ENOMEM;
  }
  return servant;
}

// A manager that is not registered is no error.
void unregisterQuietly(const char* name) {
  try {
    CorbaBaseAgentConfig::Instance()->UnregisterMgr(name);
  } catch (...) {
    // Nothing was there to withdraw.
  }
}

}  // namespace

POA_common::Common_I* TOPONorthMgrFactory::create() {
  return makeServant();
}

zu_corba_topo::zu_corba_topo() : ServiceObjectBase("zu_corbaagent_bundle", "zu_corba_topo") {}

void zu_corba_topo::RegistSvc() {}

NS_BUNDLEMGR1::ServiceInterface* zu_corba_topo::CreateInterface() {
  interface_ = new NS_BUNDLEMGR1::NULLServiceInterface;  // owned by the base
  return interface_;
}

int zu_corba_topo::init(int, ACE_TCHAR*[]) {
  auto record = std::make_unique<MgrRegistration>();
  // An earlier load that went without fini may have left its registration behind.
  unregisterQuietly(record->name);
  CorbaBaseAgentConfig::Instance()->RegisterMgr(record->name, &record->factory);
  // The agent owns the servant from here, and decides what a null one means.
  CorbaAgentConfig::Instance()->RegisterServant(record->name, makeServant());
  registration = std::move(record);
  return 0;
}

int zu_corba_topo::fini() {
  ServiceObjectBase::fini();
  if (registration) {
    unregisterQuietly(registration->name);
    registration.reset();
  }
  return 0;
}
