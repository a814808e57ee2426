// The service object of the module. init registers the manager "TopoManagement" and subscribes to
// topology events; fini reverses both.

#ifndef TOPOSVC_TOPOSERVICE_H
#define TOPOSVC_TOPOSERVICE_H

#include "platform/bundlemgr/BundleMgr.h"

// Thread-safety: none; the bundle manager makes its calls one at a time.
// Ownership: the loader owns the service object; the agent owns the servant that init registers.
// Errors: see init; fini drops the exceptions of UnregisterMgr and of the event manager.
class zu_corba_topo final : public NS_BUNDLEMGR1::ServiceObjectBase {
 public:
  zu_corba_topo();

  // Does nothing: the module publishes no interface for others.
  void RegistSvc() override;

  // Makes a placeholder, because the module has no service interface, and stores it in interface_.
  // Does not delete an earlier placeholder.
  NS_BUNDLEMGR1::ServiceInterface* CreateInterface() override;

  // Unregisters the manager and unsubscribes the event handler. The servant stays registered with
  // the agent, and nodeLabelCache keeps its entries. Always returns 0.
  int fini() override;

  // Ignores the arguments. Returns 0. In test mode, appends the labels of all subnetworks to
  // nodeLabelCache. Throws the exceptions of RegisterMgr and RegisterServant, and in test mode of
  // the domain; registrations made before the exception stay.
  int init(int argc, ACE_TCHAR* argv[]) override;
};

#endif
