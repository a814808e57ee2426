// The topology manager with admission of views.

#ifndef AGENT_NORTHBOUND_GUARDEDMANAGER_H
#define AGENT_NORTHBOUND_GUARDEDMANAGER_H

#include <cstddef>
#include <functional>

#include "agent/northbound/IteratorRegistry.h"
#include "agent/northbound/ViewAdmission.h"
#include "agent/northbound/ViewSizes.h"
#include "orb/idl/TopoManagementManager.h"

namespace agent {

// The admissions of a manager's operations. A separate admission for setAdditionalInfo, which also
// has large replies: the operation waits for changes of the network, and must not delay views.
struct ViewGuard {
  ViewAdmission& admission;
  ViewAdmission& information;
  IteratorRegistry& iterators;
  std::function<ViewSize(ViewKind)> sizeOf;  // of the current network; called from any thread
};

// Forwards the operations to the module's manager, and logs changes and refusals. Each view waits
// for its admission before the module runs, because the module ends the process when an allocation
// fails. Iterators that the module adds during a view are not reclaimed before the view has ended.
//
// Thread-safety: any thread.
// Ownership: borrows the manager and the guard, which outlive this object.
// Errors: exceptions of the module's manager pass; the admission throws NO_RESOURCES or TRANSIENT.
class GuardedManager final : public virtual POA_TopoManagementManager::TopoMgr_I {
 public:
  GuardedManager(POA_TopoManagementManager::TopoMgr_I& manager, const ViewGuard& guard)
      : manager_(manager), guard_(guard) {}

  void setNativeEMSName(const globaldefs::NVSList_T& objectName,
                        const char* nativeEMSName) override;
  void setUserLabel(const globaldefs::NVSList_T& objectName, const char* userLabel,
                    CORBA::Boolean enforceUniqueness) override;
  void setOwner(const globaldefs::NVSList_T& objectName, const char* owner) override;
  void getCapabilities(common::CapabilityList_T_out capabilities) override;
  void setAdditionalInfo(const globaldefs::NVSList_T& objectName,
                         globaldefs::NVSList_T& additionalInfo) override;

  void getTopoSubnetworkViewInfo(CORBA::ULong how_many,
                                 TopoManagementManager::NodeList_T_out nodeList,
                                 TopoManagementManager::NodeIterator_I_out nodeIt) override;
  void getProtectSubnetworkViewInfo(CORBA::ULong how_many,
                                    TopoManagementManager::NodeList_T_out nodeList,
                                    TopoManagementManager::NodeIterator_I_out nodeIt) override;
  void getViewInfoByTopoSubnetwork(const globaldefs::NVSList_T& topoSubnetworkName,
                                   CORBA::ULong how_many,
                                   TopoManagementManager::NodeList_T_out nodeList,
                                   TopoManagementManager::NodeIterator_I_out nodeIt) override;
  void getClockSourceSubnetworkViewInfo(CORBA::ULong how_many,
                                        TopoManagementManager::NodeList_T_out nodeList,
                                        TopoManagementManager::NodeIterator_I_out nodeIt) override;
  void getAllClockSourceViewlTopologicalLinks(
      CORBA::ULong how_many, topologicalLink::TopologicalLinkList_T_out linkList,
      topologicalLink::TopologicalLinkIterator_I_out linkIt) override;

 private:
  template <typename List, typename Run>
  void admitted(const char* operation, ViewKind kind, CORBA::ULong howMany, List& list,
                const Run& run);

  POA_TopoManagementManager::TopoMgr_I& manager_;
  const ViewGuard& guard_;
};

// The bytes of the records in an iterator that the calling thread's view adds, estimated from the
// average size of the view's records. 0 outside of a view, and for a servant of another kind.
std::size_t iteratorBytes(PortableServer::ServantBase* servant);

}  // namespace agent

#endif
