#include "conformance/checks/Views.h"

#include "client/agent/Fetch.h"
#include "conformance/checks/Refusals.h"
#include "conformance/shared/Verdict.h"

namespace conformance {
namespace {

using globaldefs::NVSList_T;
using TopoManagementManager::Node_T;
using TopoManagementManager::NodeIterator_I;
using TopoManagementManager::NodeIterator_I_out;
using TopoManagementManager::NodeIterator_I_var;
using TopoManagementManager::NodeList_T;
using TopoManagementManager::NodeList_T_out;
using TopoManagementManager::TopoMgr_I_ptr;

void ignore(std::size_t) {}

bool isSubnetwork(const Node_T& node) {
  return node.name.length() == 2 && node.name[1].name.in() == std::string("TopoSubnetwork");
}

}  // namespace

std::vector<Node_T> readNodes(const NodeView& view, CORBA::ULong howMany) {
  std::vector<Node_T> nodes;
  topoctl::fetchAll<NodeList_T, NodeIterator_I>(howMany, view, ignore)
      .forEach([&nodes](const Node_T& node) { nodes.push_back(node); });
  return nodes;
}

std::vector<topologicalLink::TopologicalLink_T> readLinks(TopoMgr_I_ptr manager,
                                                          CORBA::ULong howMany) {
  using topologicalLink::TopologicalLink_T;
  using topologicalLink::TopologicalLinkIterator_I;
  using topologicalLink::TopologicalLinkList_T;
  std::vector<TopologicalLink_T> links;
  topoctl::fetchAll<TopologicalLinkList_T, TopologicalLinkIterator_I>(
      howMany,
      [manager](CORBA::ULong count, const topologicalLink::TopologicalLinkList_T_out& list,
                const topologicalLink::TopologicalLinkIterator_I_out& iterator) {
        manager->getAllClockSourceViewlTopologicalLinks(count, list, iterator);
      },
      ignore)
      .forEach([&links](const TopologicalLink_T& link) { links.push_back(link); });
  return links;
}

NodeView topologyView(TopoMgr_I_ptr manager) {
  return [manager](CORBA::ULong howMany, const NodeList_T_out& list,
                   const NodeIterator_I_out& iterator) {
    manager->getTopoSubnetworkViewInfo(howMany, list, iterator);
  };
}

NodeView viewBelow(TopoMgr_I_ptr manager, const NVSList_T& subnetwork) {
  return [manager, subnetwork](CORBA::ULong howMany, const NodeList_T_out& list,
                               const NodeIterator_I_out& iterator) {
    manager->getViewInfoByTopoSubnetwork(subnetwork, howMany, list, iterator);
  };
}

std::vector<Node_T> readTopology(TopoMgr_I_ptr manager) {
  return readNodes(topologyView(manager), kWholeView);
}

std::vector<NamedView> nodeViews(TopoMgr_I_ptr manager) {
  const NVSList_T subnetwork = firstSubnetwork(manager);
  return {{"the topology view", topologyView(manager)},
          {"the protection view",
           [manager](CORBA::ULong howMany, const NodeList_T_out& list,
                     const NodeIterator_I_out& iterator) {
             manager->getProtectSubnetworkViewInfo(howMany, list, iterator);
           }},
          {"the clock source view",
           [manager](CORBA::ULong howMany, const NodeList_T_out& list,
                     const NodeIterator_I_out& iterator) {
             manager->getClockSourceSubnetworkViewInfo(howMany, list, iterator);
           },
           false},
          {"the view below a subnetwork", viewBelow(manager, subnetwork)}};
}

NVSList_T firstSubnetwork(TopoMgr_I_ptr manager) {
  for (const Node_T& node : readTopology(manager)) {
    if (isSubnetwork(node)) {
      return node.name;
    }
  }
  throw Skipped("the network has no topology subnetwork");
}

std::string emsOf(TopoMgr_I_ptr manager) {
  return firstSubnetwork(manager)[0].value.in();
}

TopoManagementManager::NodeIterator_I_ptr openIterator(TopoMgr_I_ptr manager, CORBA::ULong& left) {
  left = static_cast<CORBA::ULong>(readTopology(manager).size());
  if (left < 2) {
    throw Skipped("the topology view has fewer than two records");
  }
  --left;
  TopoManagementManager::NodeList_T_var first;
  NodeIterator_I_var iterator;
  skipWithoutIterators([&] { manager->getTopoSubnetworkViewInfo(1, first.out(), iterator.out()); });
  require(!CORBA::is_nil(iterator.in()), "a view with a rest returns a nil iterator");
  return iterator._retn();
}

}  // namespace conformance
