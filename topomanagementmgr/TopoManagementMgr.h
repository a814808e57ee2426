// The topology views. Every call reads the domain data again.
//
// Thread-safety: any thread; the class has no state. Ownership: arguments are borrowed for the
// call.
//
// Errors: a CORBA::ULong result is a failure code for the agent, 0 on success. Every operation may
// throw
//   InterfaceNotExistException  CorbaUtilInterface is not published,
//   CORBA::BAD_PARAM            an index is outside a list,
//   std::bad_alloc              memory is short.

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
  // --- Views. REQUIRES: the list is empty. A view that fails may leave nodes in the list.

  // Every topology node of the domain. With the test switch off, a node follows for each network
  // element that the topology does not show; with the switch on, each subnetwork node has six more
  // pairs of additional information. Returns the code of a failed domain query.
  static CORBA::ULong getTopoSubnetworkViewInfo(TopoManagementManager::NodeList_T& nodes);

  // The nodes of the topo subnetwork view without the six pairs. Returns the code of a failed
  // domain query.
  static CORBA::ULong getProtectSubnetworkViewInfo(TopoManagementManager::NodeList_T& nodes);

  // Every node below a topo subnetwork at any depth, in the domain's order, without the subnetwork.
  // A failed domain query is logged; the view then has the nodes that were collected before.
  // Throws ProcessException, after NbiException, when the name has no domain id.
  static CORBA::ULong getViewInfoByTopoSubnetwork(TopoManagementManager::NodeList_T& nodes,
                                                  const globaldefs::NVSList_T& topoSubnetworkName);

  // The domain nodes of the topo subnetwork view. Returns the code of a failed domain query; the
  // nodes that were collected before stay in the holder.
  static CORBA::ULong getTopoSubnetworkViewBaseInfo(NS_DOMAIN::TopoNodeHolder& nodes);

  // --- Steps of the views, and of the notifications.

  // Fills the TMF name of a domain object. The id is
  //   for kTopoElement     an FDN, or a decimal object number,
  //   for kTopoSubnetwork  a topology node id.
  // Any other type fails and leaves the name unchanged.
  static CORBA::ULong convertDomainToTmfObjName(globaldefs::NVSList_T& name,
                                                std::uint32_t domainType, const std::string& id);

  // Fills a node. Leaves relatedName unchanged when the domain node has no parent, and
  // additionalInfo when the test switch is off. A failure keeps the fields that are filled already.
  static CORBA::ULong convertDomainNodeToTmf(TopoManagementManager::Node_T& node,
                                             const NS_DOMAIN::TopoNode_T& domainNode);

  // Fills a list, in the domain's order. Leaves out each node whose conversion fails; the next node
  // reuses the same record without clearing it. Always returns 0.
  static CORBA::ULong convertDomainNodesToTmf(
      TopoManagementManager::NodeList_T& nodes,
      const std::vector<NS_DOMAIN::TopoNode_T>& domainNodes);

  // A block of domain nodes takes 26 MB.
  static constexpr std::size_t kBlockLength = std::size_t{128} * 1024;

  // Fills a list as convertDomainNodesToTmf does. A vector that is longer than a block is emptied:
  // its nodes are freed in blocks, so that the domain nodes and a large list are never complete at
  // the same time. A shorter vector does not change, because moving nodes takes time. REQUIRES:
  // blockLength is at least 1.
  static CORBA::ULong convertAndReleaseDomainNodes(TopoManagementManager::NodeList_T& nodes,
                                                   std::vector<NS_DOMAIN::TopoNode_T>& domainNodes,
                                                   std::size_t blockLength = kBlockLength);

  // Converts only the nodes whose entry in `chosen` is true. REQUIRES: `chosen` has one entry for
  // each domain node.
  static CORBA::ULong convertDomainNodesToTmf(TopoManagementManager::NodeList_T& nodes,
                                              const std::vector<NS_DOMAIN::TopoNode_T>& domainNodes,
                                              const std::vector<bool>& chosen);

  // Returns the value of a key of the user label map, "" for a missing key.
  using LabelLookup = std::function<std::string(const std::string& key)>;

  // Appends six pairs to the additional information of every subnetwork node. Location and topology
  // type come from the domain node at the same position, which may be a different node when an
  // earlier node was left out. The key of a label lookup is the last value of the node's name
  // followed by the name of the pair.
  static void addNodeAttributes(TopoManagementManager::NodeList_T& nodes,
                                const std::vector<NS_DOMAIN::TopoNode_T>& domainNodes,
                                const LabelLookup& labelOf);

  // Fills a node for each clock position, in order. A position without a number has an empty name;
  // a failed conversion keeps its partial name. Always returns 0.
  static int buildClockSourceNodeList(TopoManagementManager::NodeList_T& nodes,
                                      const std::vector<NS_DOMAIN::ClockPositionInfo_T>& positions);

  // Fills a link for each clock link of the domain, in order. An end without a number has an empty
  // name. Always returns 0.
  static int buildClockTopoLinkList(topologicalLink::TopologicalLinkList_T& links,
                                    const std::vector<NS_DOMAIN::ClockTopoLinkInfo_T>& clockLinks);

  // Whether a node with this parent is below a subnetwork, as ParentChains::leadToSubnetwork.
  static bool isBelowTopoSubnetwork(const std::string& subnetworkId, const std::string& parentId,
                                    const std::vector<NS_DOMAIN::TopoNode_T>& nodes);

  // The entries of `all` without those whose number occurs in `shown`; order and duplicates stay.
  static std::vector<NS_DOMAIN::NEIndex> indexesNotShown(
      const std::vector<NS_DOMAIN::NEIndex>& all, const std::vector<NS_DOMAIN::NEIndex>& shown);
};

#endif
