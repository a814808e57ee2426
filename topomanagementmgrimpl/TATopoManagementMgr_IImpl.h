// The servant of the manager "TopoManagement".
//
// Every operation calls the agent (common attributes, capabilities) or TopoManagementMgr (views),
// and translates failure codes into ProcessingFailureException.
//
// Thread-safety: any ORB thread; the servant has no state. Ownership: reference-counted; the agent
// owns the creation reference. Errors: ProcessingFailureException and CORBA system exceptions reach
// the client; any other exception ends the process.

#ifndef TOPOMANAGEMENTMGRIMPL_TATOPOMANAGEMENTMGR_IIMPL_H
#define TOPOMANAGEMENTMGRIMPL_TATOPOMANAGEMENTMGR_IIMPL_H

#include "orb/idl/TopoManagementManager.h"

namespace NS_CORBA {

class TATopoManagementMgr_IImpl : public virtual POA_TopoManagementManager::TopoMgr_I {
 public:
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

  // Not an operation of the IDL interface: for callers in this process.
  void resetObject(const globaldefs::NVSList_T& objectName);

 protected:
  TATopoManagementMgr_IImpl() = default;
  ~TATopoManagementMgr_IImpl() override = default;
};

}  // namespace NS_CORBA

#endif
