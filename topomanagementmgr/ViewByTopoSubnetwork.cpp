// The view of the nodes below a topo subnetwork.

#include "topo/Holder.h"
#include "topo/Lookup.h"
#include "topo/PlatformFailure.h"
#include "topomanagementmgr/ParentChains.h"
#include "topomanagementmgr/TopoManagementMgr.h"

namespace {

using NS_DOMAIN::TopoNode_T;

constexpr const char* kFile = "topomanagementmgr";
constexpr const char* kNoIndex =
    "TopoManagementMgr::getViewInfoByTopoSubnetwork, Name2Index Error!!";

// The domain id of a subnetwork. Throws ProcessException when the name has no id.
std::string subnetworkIdOf(const globaldefs::NVSList_T& name) {
  std::string id;
  const CORBA::ULong code = topo::lookup<NS_CORBA::CorbaUtilInterface>()->Name2Index(id, name);
  if (code != 0) {
    ProcessException failure;
    topo::reportFailure(failure, {kFile, __LINE__}, static_cast<std::int32_t>(code), kNoIndex);
    throw failure;
  }
  return id;
}

// For each node whether the node is below the subnetwork.
std::vector<bool> findBelow(const std::string& subnetworkId, const std::vector<TopoNode_T>& nodes) {
  const topo::ParentChains chains(subnetworkId, nodes);
  std::vector<bool> below(nodes.size());
  for (std::size_t i = 0; i < nodes.size(); ++i) {
    below[i] = chains.isBelow(i);
  }
  return below;
}

}  // namespace

bool TopoManagementMgr::isBelowTopoSubnetwork(const std::string& subnetworkId,
                                              const std::string& parentId,
                                              const std::vector<TopoNode_T>& nodes) {
  return topo::ParentChains(subnetworkId, nodes).leadToSubnetwork(parentId);
}

CORBA::ULong TopoManagementMgr::getViewInfoByTopoSubnetwork(
    TopoManagementManager::NodeList_T& nodes, const globaldefs::NVSList_T& topoSubnetworkName) {
  topo::Holder<std::vector<TopoNode_T>> domainNodes;
  // getTopoSubnetworkViewBaseInfo has logged a failure; the view continues with the nodes so far.
  static_cast<void>(getTopoSubnetworkViewBaseInfo(*domainNodes.get()));
  const std::string subnetworkId = subnetworkIdOf(topoSubnetworkName);
  return convertDomainNodesToTmf(nodes, *domainNodes, findBelow(subnetworkId, *domainNodes));
}
