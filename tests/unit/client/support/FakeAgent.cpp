#include "tests/unit/client/support/FakeAgent.h"

#include <algorithm>
#include <atomic>

namespace topoctl {
namespace {

using topologicalLink::TopologicalLinkList_T;
using TopoManagementManager::NodeList_T;

// The types of a view of nodes and of a view of links, for the templates below.
struct Nodes {
  using List = NodeList_T;
  using ListOut = TopoManagementManager::NodeList_T_out;
  using Iterator = TopoManagementManager::NodeIterator_I;
  using IteratorOut = TopoManagementManager::NodeIterator_I_out;
  using Skeleton = POA_TopoManagementManager::NodeIterator_I;
  static const List& of(const Script& script) { return script.nodes; }
};
struct Links {
  using List = TopologicalLinkList_T;
  using ListOut = topologicalLink::TopologicalLinkList_T_out;
  using Iterator = topologicalLink::TopologicalLinkIterator_I;
  using IteratorOut = topologicalLink::TopologicalLinkIterator_I_out;
  using Skeleton = POA_topologicalLink::TopologicalLinkIterator_I;
  static const List& of(const Script& script) { return script.links; }
};

template <typename List>
List* slice(const List& records, CORBA::ULong first, CORBA::ULong count) {
  typename List::_var_type part = new List;
  part->length(count);
  for (CORBA::ULong i = 0; i < count; ++i) {
    part[i] = records[first + i];
  }
  return part._retn();
}

template <typename Records>
class FakeIterator final : public virtual Records::Skeleton {
 public:
  FakeIterator(Script& script, PortableServer::POA_ptr poa, CORBA::ULong next)
      : script_(script), poa_(PortableServer::POA::_duplicate(poa)), next_(next) {}

  CORBA::Boolean next_n(CORBA::ULong howMany, typename Records::ListOut list) override {
    // The ORB may dispatch a request until the one that deactivated the object has ended.
    if (deactivated_) {
      throw CORBA::OBJECT_NOT_EXIST(0, CORBA::COMPLETED_NO);
    }
    script_.record("next_n(" + std::to_string(howMany) + ")");
    script_.onNext();
    const CORBA::ULong rest = Records::of(script_).length() - next_;
    const CORBA::ULong count = script_.deliversNothing ? 0 : std::min(howMany, rest);
    list = slice(Records::of(script_), next_, count);
    next_ += count;
    const bool ended = howMany >= rest && !script_.deliversNothing;
    if (ended || script_.vanishes) {
      deactivate();
    }
    return !ended;
  }

  CORBA::ULong getLength() override { return Records::of(script_).length(); }

  void destroy() override {
    script_.record("destroy");
    deactivate();
  }

 private:
  void deactivate() {
    deactivated_ = true;
    const PortableServer::ObjectId_var id = poa_->servant_to_id(this);
    poa_->deactivate_object(id.in());
  }

  Script& script_;
  const PortableServer::POA_var poa_;
  CORBA::ULong next_;
  std::atomic<bool> deactivated_{false};
};

// Returns the first batch, and an iterator for the remaining records.
template <typename Records>
void deliver(Script& script, PortableServer::POA_ptr iteratorPoa, CORBA::ULong howMany,
             typename Records::ListOut list, typename Records::IteratorOut rest) {
  const auto& records = Records::of(script);
  const CORBA::ULong count = std::min(howMany, records.length());
  list = slice(records, 0, count);
  rest = Records::Iterator::_nil();
  if (count < records.length()) {
    const PortableServer::Servant_var<FakeIterator<Records>> iterator =
        new FakeIterator<Records>(script, iteratorPoa, count);
    const PortableServer::ObjectId_var id = iteratorPoa->activate_object(iterator.in());
    rest = iterator->_this();
  }
}

// (name,value)(name,value)
std::string spelt(const globaldefs::NVSList_T& pairs) {
  std::string text;
  for (CORBA::ULong i = 0; i < pairs.length(); ++i) {
    text += std::string("(") + pairs[i].name.in() + "," + pairs[i].value.in() + ")";
  }
  return text;
}

}  // namespace

void addPair(globaldefs::NVSList_T& pairs, const std::string& name, const std::string& value) {
  pairs.length(pairs.length() + 1);
  pairs[pairs.length() - 1].name = name.c_str();
  pairs[pairs.length() - 1].value = value.c_str();
}

TopoManagementManager::Node_T makeNode(const std::string& id) {
  TopoManagementManager::Node_T node;
  addPair(node.name, "EMS", "zurich");
  addPair(node.name, "TopoSubnetwork", id);
  node.nativeEMSName = ("name of " + id).c_str();
  node.nodeType = 1;
  node.nodeParam1 = -7;
  node.nodeParam2 = 47377;
  addPair(node.relatedName, "EMS", "zurich");
  addPair(node.additionalInfo, "Region", "north");
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

topologicalLink::TopologicalLinkList_T makeLinks(CORBA::ULong count) {
  TopologicalLinkList_T links;
  links.length(count);
  for (CORBA::ULong i = 0; i < count; ++i) {
    const std::string id = "e" + std::to_string(i);
    addPair(links[i].name, "EMS", "zurich");
    addPair(links[i].name, "ClockTopoLinkId", id);
    links[i].userLabel = ("label of " + id).c_str();
    links[i].nativeEMSName = ("name of " + id).c_str();
    links[i].owner = "ops";
    links[i].direction = globaldefs::CD_BI;
    links[i].rate = -1;
    addPair(links[i].aEndTP, "ManagedElement", "1");
    addPair(links[i].zEndTP, "ManagedElement", "2");
    addPair(links[i].additionalInfo, "Region", "north");
  }
  return links;
}

void Script::record(const std::string& call) {
  const std::lock_guard<std::mutex> lock(mutex_);
  calls_.push_back(call);
}

std::vector<std::string> Script::calls() {
  const std::lock_guard<std::mutex> lock(mutex_);
  return calls_;
}

std::string Script::firstCall() {
  const std::lock_guard<std::mutex> lock(mutex_);
  return calls_.empty() ? "" : calls_.front();
}

std::string Script::lastCall() {
  const std::lock_guard<std::mutex> lock(mutex_);
  return calls_.empty() ? "" : calls_.back();
}

void FakeManager::getTopoSubnetworkViewInfo(CORBA::ULong howMany,
                                            TopoManagementManager::NodeList_T_out list,
                                            TopoManagementManager::NodeIterator_I_out rest) {
  script_.record("topo(" + std::to_string(howMany) + ")");
  script_.onView();
  deliver<Nodes>(script_, iteratorPoa_, howMany, list, rest);
}

void FakeManager::getProtectSubnetworkViewInfo(CORBA::ULong howMany,
                                               TopoManagementManager::NodeList_T_out list,
                                               TopoManagementManager::NodeIterator_I_out rest) {
  script_.record("protect(" + std::to_string(howMany) + ")");
  script_.onView();
  deliver<Nodes>(script_, iteratorPoa_, howMany, list, rest);
}

void FakeManager::getViewInfoByTopoSubnetwork(const globaldefs::NVSList_T& name,
                                              CORBA::ULong howMany,
                                              TopoManagementManager::NodeList_T_out list,
                                              TopoManagementManager::NodeIterator_I_out rest) {
  script_.record("below(" + spelt(name) + ", " + std::to_string(howMany) + ")");
  script_.onView();
  deliver<Nodes>(script_, iteratorPoa_, howMany, list, rest);
}

void FakeManager::getClockSourceSubnetworkViewInfo(CORBA::ULong howMany,
                                                   TopoManagementManager::NodeList_T_out list,
                                                   TopoManagementManager::NodeIterator_I_out rest) {
  script_.record("clocks(" + std::to_string(howMany) + ")");
  script_.onView();
  deliver<Nodes>(script_, iteratorPoa_, howMany, list, rest);
}

void FakeManager::getAllClockSourceViewlTopologicalLinks(
    CORBA::ULong howMany, topologicalLink::TopologicalLinkList_T_out list,
    topologicalLink::TopologicalLinkIterator_I_out rest) {
  script_.record("links(" + std::to_string(howMany) + ")");
  script_.onView();
  deliver<Links>(script_, iteratorPoa_, howMany, list, rest);
}

void FakeManager::setNativeEMSName(const globaldefs::NVSList_T& name, const char* text) {
  script_.record("nativeEMSName(" + spelt(name) + ", " + text + ")");
  script_.onSet();
}

void FakeManager::setUserLabel(const globaldefs::NVSList_T& name, const char* text,
                               CORBA::Boolean enforceUniqueness) {
  script_.record("userLabel(" + spelt(name) + ", " + text +
                 (enforceUniqueness ? ", unique)" : ")"));
  script_.onSet();
}

void FakeManager::setOwner(const globaldefs::NVSList_T& name, const char* text) {
  script_.record("owner(" + spelt(name) + ", " + text + ")");
  script_.onSet();
}

void FakeManager::getCapabilities(common::CapabilityList_T_out capabilities) {
  script_.record("capabilities");
  script_.onView();
  capabilities = new common::CapabilityList_T(script_.capabilities);
}

void FakeManager::setAdditionalInfo(const globaldefs::NVSList_T& name,
                                    globaldefs::NVSList_T& additionalInfo) {
  script_.record("info(" + spelt(name) + ", " + spelt(additionalInfo) + ")");
  script_.onSet();
  additionalInfo = script_.storedInfo;
}

}  // namespace topoctl
