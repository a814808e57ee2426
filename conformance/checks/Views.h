// Reading views for the checks.

#ifndef CONFORMANCE_CHECKS_VIEWS_H
#define CONFORMANCE_CHECKS_VIEWS_H

#include <functional>
#include <string>
#include <vector>

#include "orb/idl/TopoManagementManager.h"

namespace conformance {

using NodeView = std::function<void(CORBA::ULong, TopoManagementManager::NodeList_T_out,
                                    TopoManagementManager::NodeIterator_I_out)>;

// Functions throw the exceptions of the calls. Thread-safety: any thread. The manager is borrowed.

// All records of a view of nodes, and of the view of links, in batches of how_many records.
std::vector<TopoManagementManager::Node_T> readNodes(const NodeView& view, CORBA::ULong howMany);
std::vector<topologicalLink::TopologicalLink_T> readLinks(
    TopoManagementManager::TopoMgr_I_ptr manager, CORBA::ULong howMany);

// Larger than the number of records that a check expects in one reply.
constexpr CORBA::ULong kWholeView = 0xffffffff;

// The nodes of the topology view in one reply.
std::vector<TopoManagementManager::Node_T> readTopology(
    TopoManagementManager::TopoMgr_I_ptr manager);

NodeView topologyView(TopoManagementManager::TopoMgr_I_ptr manager);
NodeView viewBelow(TopoManagementManager::TopoMgr_I_ptr manager,
                   const globaldefs::NVSList_T& subnetwork);

// The views of nodes with their names: topology, protection, clock sources, and the view below the
// first topology subnetwork.
struct NamedView {
  std::string name;
  NodeView read;
  bool hasUniqueNames = true;  // clock positions of one element share the name of the element
};
std::vector<NamedView> nodeViews(TopoManagementManager::TopoMgr_I_ptr manager);

// The first topology subnetwork, and the value of "EMS" in its name. Throws Skipped when the
// network has none.
globaldefs::NVSList_T firstSubnetwork(TopoManagementManager::TopoMgr_I_ptr manager);
std::string emsOf(TopoManagementManager::TopoMgr_I_ptr manager);

// An iterator of the topology view, which has `left` records, at least one. Throws Skipped when the
// view is too small, and when the host refuses iterators.
TopoManagementManager::NodeIterator_I_ptr openIterator(TopoManagementManager::TopoMgr_I_ptr manager,
                                                       CORBA::ULong& left);

}  // namespace conformance

#endif
