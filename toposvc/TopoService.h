// The module as the bundle manager sees it: a service object that registers the manager
// "TopoManagement" and subscribes to topology events in init, and undoes both in fini.

#ifndef TOPOSVC_TOPOSERVICE_H
#define TOPOSVC_TOPOSERVICE_H

#include "platform/bundlemgr/BundleMgr.h"

// Thread-safety: none; the bundle manager makes, inits, finis and destroys it one after the other.
class zu_corba_topo final : public NS_BUNDLEMGR1::ServiceObjectBase {
 public:
  zu_corba_topo();

  // Does nothing: the module offers nothing that others could look for.
  void RegistSvc() override;

  // Makes a placeholder: the module has no service interface of its own. The object keeps it; one
  // that it had before is not released.
  NS_BUNDLEMGR1::ServiceInterface* CreateInterface() override;

  // Undoes what init did, in as far as the module owns it: the servant belongs to the agent. The
  // labels that init remembered in test mode stay.
  int fini() override;

  // The arguments are not used. In test mode, the labels of all subnetworks are remembered, after
  // those of an earlier init. Passes on what the agent raises when the manager or its servant is
  // refused, and in test mode what the domain raises; what was registered before that stays.
  int init(int argc, ACE_TCHAR* argv[]) override;
};

#endif
