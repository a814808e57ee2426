// Converts domain records into TMF names and nodes.

#include <algorithm>
#include <map>
#include <string_view>

#include "platform/agent/AgentConfig.h"
#include "platform/agent/Failures.h"
#include "platform/util/UtilCommon.h"
#include "topo/Log.h"
#include "topo/Lookup.h"
#include "topo/TmfRecords.h"
#include "topomanagementmgr/TopoManagementMgr.h"
#include "topomanagementmgr/Vendor.h"

namespace {

using NS_CORBA::CorbaUtilInterface;
using NS_CORBA::DomainObjectKey;
using Parts = std::map<std::string, std::string>;

constexpr const char* kFile = "topomanagementmgr";
constexpr const char* kNameFailed = "Failed to covert domain to tmf obj name!";
constexpr const char* kTypeFailed = "Failed to covert domain to tmf type of topo!";
constexpr const char* kIdIsZero = "Object ID cannot be 0!";

CORBA::ULong conversionFailed(std::int32_t line, const char* text) {
  topo::logFormat({kFile, line}, NS_CORBA::kLogTrace, text);
  return NS_CORBA::ERR_TOPO_CONVERSION;
}

// The number of the part of a class, or the default `number` when the part is missing.
int partNumber(const Parts& parts, const std::string& className, int number) {
  NS_UTIL::UtilCommon::Instance()->GetIntegerValueByName(parts, className, number);
  return number;
}

// An id without parts is a decimal object number.
int elementNumber(const Parts& parts, const std::string& className, const std::string& id) {
  return parts.empty() ? NS_UTIL::Str2Int(id) : partNumber(parts, className, -1);
}

// A missing number becomes -1 for network elements, and 0 for optical network elements and for
// management systems: the platform's names depend on it.
CORBA::ULong convertFdn(globaldefs::NVSList_T& name, const std::string& fdn) {
  Parts parts;
  NS_UTIL::UtilCommon::Instance()->GetSpliteFDNData(parts, fdn, ",");
  const std::string className = NS_UTIL::UtilCommon::Instance()->GetMoc(fdn);
  const std::string_view known = className;  // compares without a call
  if (known == "NE") {
    DomainObjectKey key{0, partNumber(parts, className, -1)};
    return topo::lookup<CorbaUtilInterface>()->ConvertNEIndexToName(name, key);
  }
  if (known == "ONE") {
    DomainObjectKey key{0, partNumber(parts, className, 0)};
    return topo::lookup<CorbaUtilInterface>()->ConvertONEIndexToName(name, key);
  }
  if (known == "OS") {
    std::int32_t number = partNumber(parts, className, 0);
    return topo::lookup<CorbaUtilInterface>()->ConvertOSIndexToName(name, number);
  }
  DomainObjectKey key{0, elementNumber(parts, className, fdn)};
  return topo::lookup<CorbaUtilInterface>()->ConvertNEIndexToName(name, key);
}

bool convertNodeType(CORBA::ULong& nodeType, std::uint32_t domainType) {
  switch (domainType) {
    case NS_DOMAIN::kTopoElement:
      nodeType = 0;
      return true;
    case NS_DOMAIN::kTopoSubnetwork:
      nodeType = 1;
      return true;
    default:
      return false;
  }
}

void markVendor(globaldefs::NVSList_T& additionalInfo) {
  topo::setLength(additionalInfo, 1);
  topo::setPair(additionalInfo, 0, topo::kVendorName, topo::kVendorValue);
}

// Converts the nodes at the chosen positions. Returns 0.
template <typename IsChosen>
CORBA::ULong convertChosen(TopoManagementManager::NodeList_T& nodes,
                           const std::vector<NS_DOMAIN::TopoNode_T>& domainNodes, std::size_t count,
                           const IsChosen& isChosen) {
  topo::setLength(nodes, static_cast<CORBA::ULong>(count));
  CORBA::ULong converted = 0;
  for (std::size_t i = 0; i < domainNodes.size(); ++i) {
    // After a failure, the next node reuses the record without clearing it.
    if (isChosen(i) && TopoManagementMgr::convertDomainNodeToTmf(topo::at(nodes, converted),
                                                                 domainNodes[i]) == 0) {
      ++converted;
    }
  }
  topo::setLength(nodes, converted);
  return 0;
}

}  // namespace

CORBA::ULong TopoManagementMgr::convertDomainToTmfObjName(globaldefs::NVSList_T& name,
                                                          std::uint32_t domainType,
                                                          const std::string& id) {
  switch (domainType) {
    case NS_DOMAIN::kTopoElement:
      return convertFdn(name, id);
    case NS_DOMAIN::kTopoSubnetwork:
      return topo::lookup<CorbaUtilInterface>()->ConvertTopoNodeIdToName(name, id);
    default:
      return conversionFailed(__LINE__, kNameFailed);
  }
}

CORBA::ULong TopoManagementMgr::convertDomainNodeToTmf(TopoManagementManager::Node_T& node,
                                                       const NS_DOMAIN::TopoNode_T& domainNode) {
  if (!convertNodeType(node.nodeType, domainNode.nodeType)) {
    return conversionFailed(__LINE__, kTypeFailed);
  }
  if (domainNode.nodeId == std::string_view(NS_DOMAIN::kZeroId)) {
    return conversionFailed(__LINE__, kIdIsZero);
  }
  CORBA::ULong code = convertDomainToTmfObjName(node.name, domainNode.nodeType, domainNode.nodeId);
  if (code != 0) {
    return code;
  }
  if (!NS_DOMAIN::hasNoParent(domainNode.parentId)) {
    code = convertDomainToTmfObjName(node.relatedName, domainNode.parentType, domainNode.parentId);
    if (code != 0) {
      return code;
    }
  }
  node.nativeEMSName = topo::duplicate(domainNode.nativeName.c_str());
  node.nodeParam1 = domainNode.attribute3;
  node.nodeParam2 = domainNode.attribute4;
  if (NS_CORBA::CorbaAgentConfig::Instance()->GetTestSwitch()) {
    markVendor(node.additionalInfo);
  }
  return 0;
}

CORBA::ULong TopoManagementMgr::convertDomainNodesToTmf(
    TopoManagementManager::NodeList_T& nodes,
    const std::vector<NS_DOMAIN::TopoNode_T>& domainNodes) {
  return convertChosen(nodes, domainNodes, domainNodes.size(), [](std::size_t) { return true; });
}

CORBA::ULong TopoManagementMgr::convertDomainNodesToTmf(
    TopoManagementManager::NodeList_T& nodes, const std::vector<NS_DOMAIN::TopoNode_T>& domainNodes,
    const std::vector<bool>& chosen) {
  const auto count = static_cast<std::size_t>(std::count(chosen.begin(), chosen.end(), true));
  return convertChosen(nodes, domainNodes, count, [&](std::size_t i) { return chosen[i]; });
}
