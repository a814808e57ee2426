// platform/domain/: the network that the host serves.

#include <algorithm>
#include <stdexcept>

#include "Host.h"
#include "platform/domain/DomainInterface.h"
#include "platform/event/EventMgr.h"

namespace NS_DOMAIN {

TopoData::~TopoData() = default;
NEData::~NEData() = default;
DomainFacet::~DomainFacet() = default;
DomainInterface::~DomainInterface() = default;

}  // namespace NS_DOMAIN

namespace {

using namespace NS_DOMAIN;

TopoNode_T makeNode(const std::string& id, const std::string& parent, const std::string& name) {
  TopoNode_T node;
  node.nodeId = id;
  node.parentId = parent;
  node.parentType = kTopoSubnetwork;
  node.nativeName = name;
  node.nodeType = id.find('=') == std::string::npos ? kTopoSubnetwork : kTopoElement;
  return node;
}

std::mutex mutex;
std::vector<TopoNode_T> nodes = {
    // guarded by mutex
    makeNode("Europe", kPhysicalRoot, "Europe"), makeNode("muc", "Europe", "München"),
    makeNode("NE=1", "muc", "router 1"),         makeNode("ONE=2", "muc", "amplifier 2"),
    makeNode("OS=3", "Europe", "controller 3"),
};

std::vector<TopoNode_T>::iterator find(const std::string& id) {
  return std::find_if(nodes.begin(), nodes.end(),
                      [&](const TopoNode_T& each) { return each.nodeId == id; });
}

std::vector<TopoNode_T>::iterator require(const std::string& id) {
  const auto found = find(id);
  if (found == nodes.end()) {
    throw std::runtime_error("there is no node " + id);
  }
  return found;
}

// The ORB's threads call the operations. None of them may throw anything but ProcessException.
class Domain : public DomainInterface, DomainFacet, TopoData, NEData {
  DomainFacet* GetFacet(const std::string&) override { return this; }
  TopoData* GetTopoData() override { return this; }
  NEData* GetNEData() override { return this; }

  void GetAllTopoNodes(TopoNodeHolder* holder) override {
    const std::lock_guard<std::mutex> lock(mutex);
    std::copy(nodes.begin(), nodes.end(), std::back_inserter(holder->Value()));
  }

  void GetClockPositionList(const int&, ClockPositionHolder* positions, IntHolder*) override {
    ClockPositionInfo_T position;
    position.reference = "NE=1";
    position.label = "clock of router 1";
    positions->Value().push_back(position);
  }

  void GetClockTopoLinkList(const int&, ClockTopoLinkHolder* links, IntHolder*) override {
    ClockTopoLinkInfo_T link;
    link.linkId = "link 1";
    link.nativeName = "SDH/link 1";
    link.aEndReference = "NE=1";
    link.zEndReference = "NE=4";
    links->Value().push_back(link);
  }

  // Element 1 is a node of the topology, element 4 is not.
  void GetNEIndexList(NEIndexHolder* indexes, const bool& shown) override {
    indexes->Value().push_back({0, 1});
    if (!shown) {
      indexes->Value().push_back({0, 4});
    }
  }

  void GetNEList(NEHolder* elements, const std::vector<NEIndex>& indexes) override {
    for (const NEIndex& index : indexes) {
      NE_T element;
      element.number = index.number;
      element.name = "router " + std::to_string(index.number);
      elements->Value().push_back(element);
    }
  }
};

}  // namespace

void host::createNode(const std::string& id) {
  const std::lock_guard<std::mutex> lock(mutex);
  if (id.empty() || id == kZeroId || find(id) != nodes.end()) {
    throw std::runtime_error("a node cannot have the id \"" + id + "\"");
  }
  nodes.push_back(makeNode(id, "Europe", "node " + id));
  raiseEvent(EVENT_TOPO_NODE_CREATED, nodes.back());
}

void host::changeNode(const std::string& id, const std::string& name) {
  const std::lock_guard<std::mutex> lock(mutex);
  const auto node = require(id);
  node->nativeName = name;
  raiseEvent(EVENT_TOPO_NODE_CHANGED, *node);
}

void host::deleteNode(const std::string& id) {
  const std::lock_guard<std::mutex> lock(mutex);
  const auto node = require(id);
  raiseEvent(EVENT_TOPO_NODE_DELETED, *node);
  nodes.erase(node);
}

bool host::hasSubnetwork(const std::string& id) {
  const std::lock_guard<std::mutex> lock(mutex);
  const auto node = find(id);
  return node != nodes.end() && node->nodeType == kTopoSubnetwork;
}

void host::publishDomain() {
  static Domain domain;
  NS_BUNDLEMGR1::SetIFBuf("DomainInterface", &domain);
}
