// Converts domain records into TMF names and nodes.

#include <algorithm>
#include <iterator>
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
  static const std::string separator(",");  // made once, not for every name
  Parts parts;
  NS_UTIL::UtilCommon::Instance()->GetSpliteFDNData(parts, fdn, separator);
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

// Fills a list, one node after the other. Thread-safety: none. Borrows the list. Errors: as
// convertDomainNodeToTmf.
class ListConversion {
 public:
  ListConversion(TopoManagementManager::NodeList_T& nodes, std::size_t count) : nodes_(nodes) {
    topo::setLength(nodes_, static_cast<CORBA::ULong>(count), topo::NewNumbers::kUndefined);
  }

  // After a failure, the next node reuses the record without clearing it. REQUIRES: fewer than
  // `count` nodes were added.
  void add(const NS_DOMAIN::TopoNode_T& domainNode) {
    if (TopoManagementMgr::convertDomainNodeToTmf(topo::at(nodes_, converted_), domainNode) == 0) {
      ++converted_;
    }
  }

  // Removes the unused records. Returns 0.
  CORBA::ULong finish() {
    topo::setLength(nodes_, converted_);
    return 0;
  }

 private:
  TopoManagementManager::NodeList_T& nodes_;
  CORBA::ULong converted_ = 0;
};

// Clears the vector and frees its memory.
void freeNodes(std::vector<NS_DOMAIN::TopoNode_T>& domainNodes) {
  std::vector<NS_DOMAIN::TopoNode_T>().swap(domainNodes);
}

// Moves the nodes into blocks, which can be freed one after the other.
std::vector<std::vector<NS_DOMAIN::TopoNode_T>> takeBlocks(
    std::vector<NS_DOMAIN::TopoNode_T>& domainNodes, std::size_t blockLength) {
  std::vector<std::vector<NS_DOMAIN::TopoNode_T>> blocks;
  const auto length = static_cast<std::ptrdiff_t>(blockLength);
  auto begin = std::make_move_iterator(domainNodes.begin());
  const auto end = std::make_move_iterator(domainNodes.end());
  while (begin != end) {
    const auto count = std::min(end - begin, length);
    blocks.emplace_back(begin, begin + count);
    begin += count;
  }
  freeNodes(domainNodes);
  return blocks;
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
  ListConversion conversion(nodes, domainNodes.size());
  for (const NS_DOMAIN::TopoNode_T& domainNode : domainNodes) {
    conversion.add(domainNode);
  }
  return conversion.finish();
}

CORBA::ULong TopoManagementMgr::convertAndReleaseDomainNodes(
    TopoManagementManager::NodeList_T& nodes, std::vector<NS_DOMAIN::TopoNode_T>& domainNodes,
    std::size_t blockLength) {
  if (domainNodes.size() <= blockLength) {
    return convertDomainNodesToTmf(nodes, domainNodes);
  }
  const std::size_t count = domainNodes.size();
  std::vector<std::vector<NS_DOMAIN::TopoNode_T>> blocks = takeBlocks(domainNodes, blockLength);
  ListConversion conversion(nodes, count);
  for (std::vector<NS_DOMAIN::TopoNode_T>& block : blocks) {
    for (const NS_DOMAIN::TopoNode_T& domainNode : block) {
      conversion.add(domainNode);
    }
    freeNodes(block);
  }
  return conversion.finish();
}

CORBA::ULong TopoManagementMgr::convertDomainNodesToTmf(
    TopoManagementManager::NodeList_T& nodes, const std::vector<NS_DOMAIN::TopoNode_T>& domainNodes,
    const std::vector<bool>& chosen) {
  const auto count = static_cast<std::size_t>(std::count(chosen.begin(), chosen.end(), true));
  ListConversion conversion(nodes, count);
  for (std::size_t i = 0; i < domainNodes.size(); ++i) {
    if (chosen[i]) {
      conversion.add(domainNodes[i]);
    }
  }
  return conversion.finish();
}
