#include "toposvc/TopoService.h"

#include <cerrno>
#include <memory>
#include <new>
#include <vector>

#include "platform/agent/AgentConfig.h"
#include "topo/Holder.h"
#include "topo/Lookup.h"
#include "topoevent/CorbaTopoEventHandler.h"
#include "topoevent/NodeLabelCache.h"
#include "topoevent/TopoEventMgr.h"
#include "topomanagementmgrimpl/TATopoManagementMgr_IImpl.h"
#include "toposvc/RefCount.h"
#include "toposvc/TOPONorthMgrFactory.h"

namespace {

using NS_CORBA::CorbaAgentConfig;
using NS_CORBA::CorbaBaseAgentConfig;
using NS_CORBA::CorbaTopoEventHandler;
using NS_CORBA::RefCount;
using NS_CORBA::TATopoManagementMgr_IImpl;
using NS_DOMAIN::TopoNode_T;

// The registration of the manager: the agent borrows both fields while the manager is registered.
struct MgrRegistration {
  const char* name = "TopoManagement";
  TOPONorthMgrFactory factory;
};

// The current registration; null when the manager is not registered.
std::unique_ptr<MgrRegistration> registration;

// The event handler of the last init; null before the first init.
std::unique_ptr<CorbaTopoEventHandler> eventHandler;

// The event handlers of earlier inits. An earlier handler may still be subscribed (no fini followed
// its init, or UnSubscribe failed), so the handlers live as long as the module.
std::vector<std::unique_ptr<CorbaTopoEventHandler>> earlierEventHandlers;

// The caller owns the creation reference. When memory is short, returns null and sets errno to
// ENOMEM.
POA_common::Common_I* makeServant() {
  auto* servant = new (std::nothrow) RefCount<TATopoManagementMgr_IImpl>;
  if (servant == nullptr) {
    errno = ENOMEM;
  }
  return servant;
}

// Ignores every failure, such as the failure for a manager that is not registered.
void unregisterQuietly(const char* name) {
  try {
    CorbaBaseAgentConfig::Instance()->UnregisterMgr(name);
  } catch (...) {
    // The manager is not registered, or the agent cannot be reached.
  }
}

void makeEventHandler() {
  auto handler = std::make_unique<CorbaTopoEventHandler>();
  if (eventHandler) {
    earlierEventHandlers.push_back(std::move(eventHandler));
  }
  eventHandler = std::move(handler);
}

void subscribeToEvents() {
  makeEventHandler();
  TopoEventMgr::Instance();
  TopoEventMgr::OnSubscibeEvent(eventHandler.get());
}

void unsubscribeFromEvents() {
  if (eventHandler) {
    TopoEventMgr::Instance();
    TopoEventMgr::OnUnSubscibeEvent(eventHandler.get());
  }
  TopoEventMgr::CleanUp();
}

// Entries of an earlier init stay before the new entries.
void seedNodeLabelCache() {
  topo::Holder<std::vector<TopoNode_T>> nodes;
  topo::GetCorbaDomain()->GetTopoData()->GetAllTopoNodes(nodes.get());
  for (const TopoNode_T& node : *nodes) {
    if (node.nodeType == NS_DOMAIN::kTopoSubnetwork) {
      topo::nodeLabelCache.append(node.nodeId, node.nativeName);
    }
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
  // An earlier load without fini may have left its registration.
  unregisterQuietly(record->name);
  CorbaBaseAgentConfig::Instance()->RegisterMgr(record->name, &record->factory);
  PortableServer::Servant_var<POA_common::Common_I> servant = makeServant();
  // The agent takes over the servant. A null servant is passed too; the agent handles it.
  CorbaAgentConfig::Instance()->RegisterServant(record->name, servant._retn());
  registration = std::move(record);
  subscribeToEvents();
  if (CorbaAgentConfig::Instance()->GetTestSwitch()) {
    seedNodeLabelCache();
  }
  return 0;
}

int zu_corba_topo::fini() {
  ServiceObjectBase::fini();
  if (registration) {
    unregisterQuietly(registration->name);
    registration.reset();
  }
  unsubscribeFromEvents();
  return 0;
}
