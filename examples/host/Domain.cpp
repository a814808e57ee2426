// platform/domain/: the network.
#include <algorithm>
#include <mutex>
#include <stdexcept>
#include "Host.h"
#include "platform/domain/DomainInterface.h"
#include "platform/event/EventMgr.h"

using namespace NS_DOMAIN;

namespace {

TopoNode_T makeNode(const std::string& id, const std::string& parent, const std::string& name) {
  const auto type = id.find('=') != std::string::npos ? kTopoElement : kTopoSubnetwork;
  return {id, parent, name, "", "", type, kTopoSubnetwork, 0, 0, {}};
}

std::mutex mutex;
std::vector<TopoNode_T> nodes = {  // guarded by mutex
    makeNode("Europe", kPhysicalRoot, "Europe"), makeNode("muc", "Europe", "München"),
    makeNode("NE=1", "muc", "router 1"), makeNode("ONE=2", "muc", "amplifier 2"),
    makeNode("OS=3", "Europe", "controller 3")};

auto find(const std::string& id) {
  return std::find_if(nodes.begin(), nodes.end(), [&](auto& node) { return node.nodeId == id; });
}

auto existing(const std::string& id) {
  return find(id) != nodes.end() ? find(id) : throw std::runtime_error("no node \"" + id + '"');
}

// Threads of the ORB call the functions, which may throw ProcessException.
struct Domain final : DomainInterface, DomainFacet, TopoData, NEData {
  DomainFacet* GetFacet(const std::string&) override { return this; }
  TopoData* GetTopoData() override { return this; }
  NEData* GetNEData() override { return this; }
  void GetAllTopoNodes(TopoNodeHolder* result) override {
    const std::lock_guard lock(mutex);
    result->Value().insert(result->Value().end(), nodes.begin(), nodes.end());
  }
  void GetNEIndexList(NEIndexHolder* indexes, const bool& shown) override {
    indexes->Value().push_back({0, 1});
    if (!shown) indexes->Value().push_back({0, 4});  // is in no node of the topology
  }
  void GetNEList(NEHolder* elements, const std::vector<NEIndex>& indexes) override {
    for (const NEIndex& index : indexes)
      if (index.number == 1 || index.number == 4)
        elements->Value().push_back(
            {0, index.number, {}, "router " + std::to_string(index.number)});
  }
  // The network has no clocks.
  void GetClockPositionList(const int&, ClockPositionHolder*, IntHolder*) override {}
  void GetClockTopoLinkList(const int&, ClockTopoLinkHolder*, IntHolder*) override {}
} domain;

}  // namespace

// The mutex stays locked until the event is queued, so events have the order of the changes.
void host::createNode(const std::string& id) {
  const std::lock_guard lock(mutex);
  if (id.empty() || id == kZeroId || id == kPhysicalRoot || find(id) != nodes.end())
    throw std::runtime_error("the id cannot be used");
  nodes.push_back(makeNode(id, "Europe", "node " + id));
  raiseEvent(EVENT_TOPO_NODE_CREATED, nodes.back());
}

void host::changeNode(const std::string& id) {
  const std::lock_guard lock(mutex);
  existing(id)->nativeName += " (renamed)";
  raiseEvent(EVENT_TOPO_NODE_CHANGED, *existing(id));
}

void host::deleteNode(const std::string& id) {
  const std::lock_guard lock(mutex);
  raiseEvent(EVENT_TOPO_NODE_DELETED, *existing(id));
  nodes.erase(existing(id));
}

bool host::hasSubnetwork(const std::string& id) {
  const std::lock_guard lock(mutex);
  return find(id) != nodes.end() && find(id)->nodeType == kTopoSubnetwork;
}

void host::publishDomain() { NS_BUNDLEMGR1::SetIFBuf("DomainInterface", &domain); }
