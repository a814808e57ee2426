// An agent's manager in this process: serves nodes and links, records its calls, and fails when the
// test asks for a failure.

#ifndef TESTS_UNIT_CLIENT_SUPPORT_FAKEAGENT_H
#define TESTS_UNIT_CLIENT_SUPPORT_FAKEAGENT_H

#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "orb/idl/TopoManagementManager.h"
#include "orb/orb.h"

namespace topoctl {

TopoManagementManager::Node_T makeNode(const std::string& id);
TopoManagementManager::NodeList_T makeNodes(CORBA::ULong count);
topologicalLink::TopologicalLinkList_T makeLinks(CORBA::ULong count);
void addPair(globaldefs::NVSList_T& pairs, const std::string& name, const std::string& value);

// The behaviour of the fake agent and the calls that it has received. Shared by all fake objects,
// which run on the ORB's threads.
//
// Thread-safety: the functions are safe on any thread; the test sets the members between requests.
class Script {
 public:
  // Constant from settle() on while requests are served. An exception of a function becomes the
  // exception of the call.
  TopoManagementManager::NodeList_T nodes;  // of every view of nodes
  topologicalLink::TopologicalLinkList_T links;
  common::CapabilityList_T capabilities;
  globaldefs::NVSList_T storedInfo;  // result of setAdditionalInfo
  std::function<void()> onView = [] {};
  std::function<void()> onNext = [] {};
  std::function<void()> onSet = [] {};
  std::function<void()> onSubscribe = [] {};
  std::function<void()> onPing = [] {};
  std::function<void()> onConsole = [] {};
  bool hasModule = true;         // false: the console says that the module is missing
  bool deliversNothing = false;  // the iterator returns empty batches
  bool vanishes = false;         // the iterator deactivates after its first batch

  // Orders the members that the test has set before later requests of other processes, and earlier
  // requests before members that the test sets next.
  void settle() { const std::lock_guard<std::mutex> lock(mutex_); }

  // Returns a copy of one of the functions.
  std::function<void()> copyOf(const std::function<void()>& function) {
    const std::lock_guard<std::mutex> lock(mutex_);
    return function;
  }

  void record(const std::string& call);
  std::vector<std::string> calls();
  std::string firstCall();  // "" without a call
  std::string lastCall();   // "" without a call

 private:
  std::mutex mutex_;
  std::vector<std::string> calls_;  // guarded by mutex_
};

class FakeManager final : public virtual POA_TopoManagementManager::TopoMgr_I {
 public:
  // Borrows the script; keeps a reference to the POA.
  FakeManager(Script& script, PortableServer::POA_ptr iteratorPoa)
      : script_(script), iteratorPoa_(PortableServer::POA::_duplicate(iteratorPoa)) {}

  void getTopoSubnetworkViewInfo(CORBA::ULong howMany,
                                 TopoManagementManager::NodeList_T_out nodeList,
                                 TopoManagementManager::NodeIterator_I_out nodeIt) override;
  void getProtectSubnetworkViewInfo(CORBA::ULong howMany,
                                    TopoManagementManager::NodeList_T_out nodeList,
                                    TopoManagementManager::NodeIterator_I_out nodeIt) override;
  void getViewInfoByTopoSubnetwork(const globaldefs::NVSList_T& topoSubnetworkName,
                                   CORBA::ULong howMany,
                                   TopoManagementManager::NodeList_T_out nodeList,
                                   TopoManagementManager::NodeIterator_I_out nodeIt) override;
  void getClockSourceSubnetworkViewInfo(CORBA::ULong howMany,
                                        TopoManagementManager::NodeList_T_out nodeList,
                                        TopoManagementManager::NodeIterator_I_out nodeIt) override;
  void getAllClockSourceViewlTopologicalLinks(
      CORBA::ULong howMany, topologicalLink::TopologicalLinkList_T_out linkList,
      topologicalLink::TopologicalLinkIterator_I_out linkIt) override;

  void setNativeEMSName(const globaldefs::NVSList_T& objectName,
                        const char* nativeEMSName) override;
  void setUserLabel(const globaldefs::NVSList_T& objectName, const char* userLabel,
                    CORBA::Boolean enforceUniqueness) override;
  void setOwner(const globaldefs::NVSList_T& objectName, const char* owner) override;
  void getCapabilities(common::CapabilityList_T_out capabilities) override;
  void setAdditionalInfo(const globaldefs::NVSList_T& objectName,
                         globaldefs::NVSList_T& additionalInfo) override;

 private:
  Script& script_;
  const PortableServer::POA_var iteratorPoa_;
};

}  // namespace topoctl

#endif
