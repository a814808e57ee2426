#include "FakeAgent.h"

#include <algorithm>

namespace topoctl {
namespace {

using TopoManagementManager::NodeList_T;

NodeList_T* slice(const NodeList_T& nodes, CORBA::ULong first, CORBA::ULong count) {
  TopoManagementManager::NodeList_T_var part = new NodeList_T;
  part->length(count);
  for (CORBA::ULong i = 0; i < count; ++i) {
    part[i] = nodes[first + i];
  }
  return part._retn();
}

class FakeIterator final : public virtual POA_TopoManagementManager::NodeIterator_I {
 public:
  FakeIterator(Script& script, PortableServer::POA_ptr poa, CORBA::ULong next)
      : script_(script), poa_(PortableServer::POA::_duplicate(poa)), next_(next) {}

  CORBA::Boolean next_n(CORBA::ULong howMany,
                        TopoManagementManager::NodeList_T_out nodeList) override {
    script_.record("next_n(" + std::to_string(howMany) + ")");
    script_.onNext();
    const CORBA::ULong rest = script_.nodes.length() - next_;
    const CORBA::ULong count = script_.deliversNothing ? 0 : std::min(howMany, rest);
    nodeList = slice(script_.nodes, next_, count);
    next_ += count;
    const bool ended = howMany >= rest && !script_.deliversNothing;
    if (ended || script_.vanishes) {
      deactivate();
    }
    return !ended;
  }

  CORBA::ULong getLength() override { return script_.nodes.length(); }

  void destroy() override {
    script_.record("destroy");
    deactivate();
  }

 private:
  void deactivate() {
    const PortableServer::ObjectId_var id = poa_->servant_to_id(this);
    poa_->deactivate_object(id);
  }

  Script& script_;
  const PortableServer::POA_var poa_;
  CORBA::ULong next_;
};

[[noreturn]] void notImplemented() {
  throw globaldefs::ProcessingFailureException(globaldefs::EXCPT_NOT_IMPLEMENTED, "");
}

void setPair(globaldefs::NVSList_T& pairs, const char* name, const std::string& value) {
  pairs.length(pairs.length() + 1);
  pairs[pairs.length() - 1].name = name;
  pairs[pairs.length() - 1].value = value.c_str();
}

}  // namespace

TopoManagementManager::Node_T makeNode(const std::string& id) {
  TopoManagementManager::Node_T node;
  setPair(node.name, "EMS", "zurich");
  setPair(node.name, "TopoSubnetwork", id);
  node.nativeEMSName = ("name of " + id).c_str();
  node.nodeType = 1;
  node.nodeParam1 = -7;
  node.nodeParam2 = 47377;
  setPair(node.relatedName, "EMS", "zurich");
  setPair(node.additionalInfo, "Region", "north");
  return node;
}

NodeList_T makeNodes(CORBA::ULong count) {
  NodeList_T nodes;
  nodes.length(count);
  for (CORBA::ULong i = 0; i < count; ++i) {
    nodes[i] = makeNode("n" + std::to_string(i));
  }
  return nodes;
}

void Script::record(const std::string& call) {
  const std::lock_guard<std::mutex> lock(mutex_);
  calls_.push_back(call);
}

std::vector<std::string> Script::calls() {
  const std::lock_guard<std::mutex> lock(mutex_);
  return calls_;
}

void FakeManager::getTopoSubnetworkViewInfo(CORBA::ULong howMany,
                                            TopoManagementManager::NodeList_T_out nodeList,
                                            TopoManagementManager::NodeIterator_I_out nodeIt) {
  script_.record("topo(" + std::to_string(howMany) + ")");
  script_.onView();
  const CORBA::ULong count = std::min(howMany, script_.nodes.length());
  nodeList = slice(script_.nodes, 0, count);
  nodeIt = TopoManagementManager::NodeIterator_I::_nil();
  if (count < script_.nodes.length()) {
    const PortableServer::Servant_var<FakeIterator> iterator =
        new FakeIterator(script_, iteratorPoa_, count);
    const PortableServer::ObjectId_var id = iteratorPoa_->activate_object(iterator);
    nodeIt = iterator->_this();
  }
}

void FakeManager::getProtectSubnetworkViewInfo(CORBA::ULong, TopoManagementManager::NodeList_T_out,
                                               TopoManagementManager::NodeIterator_I_out) {
  notImplemented();
}

void FakeManager::getViewInfoByTopoSubnetwork(const globaldefs::NVSList_T&, CORBA::ULong,
                                              TopoManagementManager::NodeList_T_out,
                                              TopoManagementManager::NodeIterator_I_out) {
  notImplemented();
}

void FakeManager::getClockSourceSubnetworkViewInfo(CORBA::ULong,
                                                   TopoManagementManager::NodeList_T_out,
                                                   TopoManagementManager::NodeIterator_I_out) {
  notImplemented();
}

void FakeManager::getAllClockSourceViewlTopologicalLinks(
    CORBA::ULong, topologicalLink::TopologicalLinkList_T_out,
    topologicalLink::TopologicalLinkIterator_I_out) {
  notImplemented();
}

void FakeManager::setNativeEMSName(const globaldefs::NVSList_T&, const char*) {
  notImplemented();
}

void FakeManager::setUserLabel(const globaldefs::NVSList_T&, const char*, CORBA::Boolean) {
  notImplemented();
}

void FakeManager::setOwner(const globaldefs::NVSList_T&, const char*) {
  notImplemented();
}

void FakeManager::getCapabilities(common::CapabilityList_T_out capabilities) {
  script_.record("capabilities");
  script_.onView();
  capabilities = new common::CapabilityList_T(script_.capabilities);
}

void FakeManager::setAdditionalInfo(const globaldefs::NVSList_T&, globaldefs::NVSList_T&) {
  notImplemented();
}

}  // namespace topoctl
