// Converts clock positions and clock links into TMF records.

#include <cstdlib>

#include "platform/agent/AgentConfig.h"
#include "topo/Lookup.h"
#include "topo/TmfRecords.h"
#include "topomanagementmgr/TopoManagementMgr.h"

namespace {

using NS_CORBA::CorbaUtilInterface;
using NS_CORBA::DomainObjectKey;
using NS_DOMAIN::ClockPositionInfo_T;
using NS_DOMAIN::ClockTopoLinkInfo_T;
using topologicalLink::TopologicalLink_T;

// Fills the TMF name of the network element of a reference TEXT=NUMBER; an empty name without "=".
// The key belongs to the whole list; this function writes its number only.
void setNameOfReference(globaldefs::NVSList_T& name, const std::string& reference,
                        DomainObjectKey& key) {
  topo::setLength(name, 0);
  const std::size_t separator = reference.find('=');
  if (separator != std::string::npos) {
    key.objectNumber =
        static_cast<std::int32_t>(std::strtoll(reference.c_str() + separator + 1, nullptr, 10));
    topo::lookup<CorbaUtilInterface>()->ConvertNEIndexToName(name, key);
  }
}

void fillNode(TopoManagementManager::Node_T& node, const ClockPositionInfo_T& position,
              DomainObjectKey& key) {
  setNameOfReference(node.name, position.reference, key);
  node.nativeEMSName = topo::duplicate(position.label.c_str());
  node.nodeParam1 = position.value1;
  node.nodeParam2 = position.value2;
  node.nodeType = 0;
  topo::setLength(node.relatedName, 0);
  topo::setLength(node.additionalInfo, 0);
}

void setNameOfLink(globaldefs::NVSList_T& name, const std::string& linkId) {
  topo::setLength(name, 2);
  topo::setPair(name, 0, "EMS", NS_CORBA::CorbaBaseAgentConfig::Instance()->EmsName());
  topo::setPair(name, 1, "ClockTopoLinkId", linkId);
}

// The stored label of a link, or else a default label.
std::string userLabelOf(const ClockTopoLinkInfo_T& clockLink) {
  NS_CORBA::ObjectLabelInfo info;
  topo::lookup<CorbaUtilInterface>()->GetObjectLabelInfo(info, clockLink.linkId,
                                                         CorbaUtilInterface::kClockTopoLinkType);
  return info.userLabel.empty() ? "Links:" + clockLink.nativeName : info.userLabel;
}

// The link type is the part of the native name before the first "/".
void setLinkType(globaldefs::NVSList_T& info, const std::string& nativeName) {
  const std::size_t separator = nativeName.find('/');
  topo::setLength(info, 1);
  topo::setPair(info, 0, "TOPO_LINK_TYPE",
                separator == std::string::npos ? "" : nativeName.substr(0, separator));
}

void fillLink(TopologicalLink_T& link, const ClockTopoLinkInfo_T& clockLink, DomainObjectKey& key) {
  setNameOfLink(link.name, clockLink.linkId);
  link.userLabel = topo::duplicate(userLabelOf(clockLink).c_str());
  link.nativeEMSName = topo::duplicate(clockLink.nativeName.c_str());
  link.owner = topo::duplicate("");
  link.direction = globaldefs::CD_UNI;
  link.rate = 0;
  setNameOfReference(link.aEndTP, clockLink.aEndReference, key);
  setNameOfReference(link.zEndTP, clockLink.zEndReference, key);
  setLinkType(link.additionalInfo, clockLink.nativeName);
}

// Fills a record for each item, in order.
template <typename List, typename Item, typename Fill>
int buildList(List& list, const std::vector<Item>& items, const Fill& fill) {
  topo::setLength(list, static_cast<CORBA::ULong>(items.size()));
  DomainObjectKey key;
  CORBA::ULong next = 0;
  for (const Item& item : items) {
    fill(topo::at(list, next++), item, key);
  }
  return 0;
}

}  // namespace

int TopoManagementMgr::buildClockSourceNodeList(TopoManagementManager::NodeList_T& nodes,
                                                const std::vector<ClockPositionInfo_T>& positions) {
  return buildList(nodes, positions, fillNode);
}

int TopoManagementMgr::buildClockTopoLinkList(topologicalLink::TopologicalLinkList_T& links,
                                              const std::vector<ClockTopoLinkInfo_T>& clockLinks) {
  return buildList(links, clockLinks, fillLink);
}
