// An agent's manager in this process: serves nodes and links as the interface promises, records the
// calls and fails where a test wants it to.

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

// How the fake behaves, and what it has seen. Shared by the manager and its iterators, which are
// called from the ORB's threads.
class Script {
 public:
  // Constant once settle() was called, while requests are served. The functions may throw what the
  // call shall throw.
  TopoManagementManager::NodeList_T nodes;  // of every view of nodes
  topologicalLink::TopologicalLinkList_T links;
  common::CapabilityList_T capabilities;
  globaldefs::NVSList_T storedInfo;  // what setting additional information hands back
  std::function<void()> onView = [] {};
  std::function<void()> onNext = [] {};
  std::function<void()> onSet = [] {};
  std::function<void()> onSubscribe = [] {};
  std::function<void()> onPing = [] {};
  std::function<void()> onConsole = [] {};
  bool deliversNothing = false;  // the iterator never gets on
  bool vanishes = false;         // the iterator is gone after its first batch

  // Makes what the test has set visible to requests that other processes send, and what they have
  // read free to be set again.
  void settle() { const std::lock_guard<std::mutex> lock(mutex_); }

  // One of the functions as it is set now.
  std::function<void()> present(const std::function<void()>& function) {
    const std::lock_guard<std::mutex> lock(mutex_);
    return function;
  }

  void record(const std::string& call);
  std::vector<std::string> calls();
  std::string firstCall();  // "" when there was none, so that a program that did not run fails a
  std::string lastCall();   // comparison

 private:
  std::mutex mutex_;
  std::vector<std::string> calls_;  // guarded by mutex_
};

class FakeManager final : public virtual POA_TopoManagementManager::TopoMgr_I {
 public:
  // Both borrowed.
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
