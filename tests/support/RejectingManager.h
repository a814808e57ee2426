// A base for fake managers.

#ifndef TESTS_SUPPORT_REJECTINGMANAGER_H
#define TESTS_SUPPORT_REJECTINGMANAGER_H

#include "orb/idl/TopoManagementManager.h"

namespace support {

// Throws NO_IMPLEMENT from every operation that the subclass does not override. Thread-safety: any
// thread. Ownership: reference-counted, owns nothing.
class RejectingManager : public virtual POA_TopoManagementManager::TopoMgr_I {
 public:
  void setNativeEMSName(const globaldefs::NVSList_T&, const char*) override { reject(); }
  void setUserLabel(const globaldefs::NVSList_T&, const char*, CORBA::Boolean) override {
    reject();
  }
  void setOwner(const globaldefs::NVSList_T&, const char*) override { reject(); }
  void getCapabilities(common::CapabilityList_T_out) override { reject(); }
  void setAdditionalInfo(const globaldefs::NVSList_T&, globaldefs::NVSList_T&) override {
    reject();
  }
  void getTopoSubnetworkViewInfo(CORBA::ULong, TopoManagementManager::NodeList_T_out,
                                 TopoManagementManager::NodeIterator_I_out) override {
    reject();
  }
  void getProtectSubnetworkViewInfo(CORBA::ULong, TopoManagementManager::NodeList_T_out,
                                    TopoManagementManager::NodeIterator_I_out) override {
    reject();
  }
  void getViewInfoByTopoSubnetwork(const globaldefs::NVSList_T&, CORBA::ULong,
                                   TopoManagementManager::NodeList_T_out,
                                   TopoManagementManager::NodeIterator_I_out) override {
    reject();
  }
  void getClockSourceSubnetworkViewInfo(CORBA::ULong, TopoManagementManager::NodeList_T_out,
                                        TopoManagementManager::NodeIterator_I_out) override {
    reject();
  }
  void getAllClockSourceViewlTopologicalLinks(
      CORBA::ULong, topologicalLink::TopologicalLinkList_T_out,
      topologicalLink::TopologicalLinkIterator_I_out) override {
    reject();
  }

 private:
  [[noreturn]] static void reject() { throw CORBA::NO_IMPLEMENT(); }
};

}  // namespace support

#endif
