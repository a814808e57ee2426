// The servants of the probe: a manager that runs commands, and an iterator.

#ifndef CONFORMANCE_PROBE_PROBEMANAGER_H
#define CONFORMANCE_PROBE_PROBEMANAGER_H

#include "orb/idl/TopoManagementManager.h"
#include "platform/agent/AgentConfig.h"

namespace conformance::probe {

// setAdditionalInfo runs a command (ProbeProtocol.h); getProtectSubnetworkViewInfo returns an
// iterator, and registers the iterator in the way of the module. The views have no records.
//
// Thread-safety: any thread of the ORB. Ownership: reference-counted. Errors:
// ProcessingFailureException for unknown commands and for failures of the host.
class ProbeManager final : public virtual POA_TopoManagementManager::TopoMgr_I {
 public:
  ProbeManager();

  static int count();  // the servants that exist

  void setNativeEMSName(const globaldefs::NVSList_T&, const char*) override {}
  void setUserLabel(const globaldefs::NVSList_T&, const char*, CORBA::Boolean) override {}
  void setOwner(const globaldefs::NVSList_T&, const char*) override {}
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

 protected:
  ~ProbeManager() override;
};

// Answers getLength with 42, and has no records. Ownership, thread-safety and errors: as
// ProbeManager.
class ProbeIterator final : public virtual POA_TopoManagementManager::NodeIterator_I {
 public:
  explicit ProbeIterator(PortableServer::POA_ptr poa);

  static int count();  // the servants that exist

  CORBA::Boolean next_n(CORBA::ULong how_many,
                        TopoManagementManager::NodeList_T_out nodeList) override;
  CORBA::ULong getLength() override { return 42; }
  void destroy() override {}
  PortableServer::POA_ptr _default_POA() override;

 protected:
  ~ProbeIterator() override;

 private:
  const PortableServer::POA_var poa_;
};

// Makes managers, which the caller owns. Thread-safety: any thread; no state. Errors:
// std::bad_alloc.
class ProbeFactory final : public NS_CORBA::MgrFactory {
 public:
  POA_common::Common_I* create() override { return new ProbeManager; }
};

}  // namespace conformance::probe

#endif
