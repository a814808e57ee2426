// The topology views, computed afresh from the domain data on every call.
//
// Thread-safety: no state; every operation from any thread.
//
// Results are failure codes for the agent (unsigned 32-bit, 0 is success). Unless an operation says
// otherwise, InterfaceNotExistException passes through it when the CORBA utility interface is
// missing, and CORBA::BAD_PARAM when a record has no room for what it must hold.

#ifndef TOPOMANAGEMENTMGR_TOPOMANAGEMENTMGR_H
#define TOPOMANAGEMENTMGR_TOPOMANAGEMENTMGR_H

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "orb/idl/TopoManagementManager.h"
#include "platform/domain/DomainInterface.h"

class TopoManagementMgr {
 public:
  // --- Views. Lists are filled from empty; a failed view may leave some of its nodes in the list.

  // Every topology node of the domain, then, with the test switch off, one node for every network
  // element that the topology does not show. With the switch on, subnetwork nodes carry six
  // descriptive pairs more. Returns the code of a failed domain query.
  static CORBA::ULong getTopoSubnetworkViewInfo(TopoManagementManager::NodeList_T& nodes);

  // The nodes of the topo subnetwork view without their descriptive pairs. Returns the code of a
  // failed domain query.
  static CORBA::ULong getProtectSubnetworkViewInfo(TopoManagementManager::NodeList_T& nodes);

  // Every node below a topo subnetwork at any depth, in the domain's order, without the subnetwork
  // itself. A failed domain query is logged and leaves the view with what was collected before it.
  // Throws ProcessException, after reporting it to the agent, when the name has no domain id.
  static CORBA::ULong getViewInfoByTopoSubnetwork(TopoManagementManager::NodeList_T& nodes,
                                                  const globaldefs::NVSList_T& topoSubnetworkName);

  // The domain nodes of the topo subnetwork view. Returns the code of a failed domain query; what
  // was collected before it stays in the holder.
  static CORBA::ULong getTopoSubnetworkViewBaseInfo(NS_DOMAIN::TopoNodeHolder& nodes);

  // --- Steps of the views, and of the notifications.

  // The TMF name of a domain object. Domain type 1: the id is an FDN, or a bare object number;
  // domain type 2: a topology node id. Any other type fails and leaves the name alone.
  static CORBA::ULong convertDomainToTmfObjName(globaldefs::NVSList_T& name,
                                                std::uint32_t domainType, const std::string& id);

  // Fills one node. Fields that a domain node says nothing about are left as they are, and a
  // failure leaves the fields written before it in place.
  static CORBA::ULong convertDomainNodeToTmf(TopoManagementManager::Node_T& node,
                                             const NS_DOMAIN::TopoNode_T& domainNode);

  // Fills a whole list in order. Nodes that fail to convert are left out, and the next one is
  // written over what they left. Always 0.
  static CORBA::ULong convertDomainNodesToTmf(
      TopoManagementManager::NodeList_T& nodes,
      const std::vector<NS_DOMAIN::TopoNode_T>& domainNodes);

  // The value that the user label map has for a key, "" when it has none.
  using LabelLookup = std::function<std::string(const std::string& key)>;

  // Appends the six descriptive pairs to every subnetwork node. A node's location and topology type
  // come from the domain node at the same position, whichever that is; three values are looked up
  // under the last value of the node's name followed by the name of the pair.
  static void addNodeAttributes(TopoManagementManager::NodeList_T& nodes,
                                const std::vector<NS_DOMAIN::TopoNode_T>& domainNodes,
                                const LabelLookup& labelOf);

  // One node for every clock position, in order. A position without a number has no name; a
  // conversion that fails leaves whatever it put into the name. Always 0.
  static int buildClockSourceNodeList(TopoManagementManager::NodeList_T& nodes,
                                      const std::vector<NS_DOMAIN::ClockPositionInfo_T>& positions);

  // One link for every clock link of the domain, in order; ends without a number have no name.
  // Always 0.
  static int buildClockTopoLinkList(topologicalLink::TopologicalLinkList_T& links,
                                    const std::vector<NS_DOMAIN::ClockTopoLinkInfo_T>& clockLinks);

  // Whether the chain of parents that begins with parentId leads to a subnetwork. A parent that is
  // none of the nodes, a root marker and a cycle end the chain; of several nodes with one id the
  // first counts.
  static bool isBelowTopoSubnetwork(const std::string& subnetworkId, const std::string& parentId,
                                    const std::vector<NS_DOMAIN::TopoNode_T>& nodes);

  // The entries of all whose number is the number of no entry of shown, in order, duplicates kept.
  static std::vector<NS_DOMAIN::NEIndex> indexesNotShown(
      const std::vector<NS_DOMAIN::NEIndex>& all, const std::vector<NS_DOMAIN::NEIndex>& shown);
};

#endif
