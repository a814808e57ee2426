// The topo subnetwork view and the protect subnetwork view: the query of the domain nodes, and the
// additional information of subnetworks in test mode.

#include <algorithm>
#include <iterator>

#include "platform/agent/AgentConfig.h"
#include "topo/Holder.h"
#include "topo/Log.h"
#include "topo/Lookup.h"
#include "topo/TmfRecords.h"
#include "topomanagementmgr/TopoManagementMgr.h"
#include "topomanagementmgr/UserLabels.h"
#include "topomanagementmgr/UserlabelMap.h"
#include "topomanagementmgr/Vendor.h"

namespace {

using NS_DOMAIN::DomainFacet;
using NS_DOMAIN::NE_T;
using NS_DOMAIN::NEIndex;
using NS_DOMAIN::TopoNode_T;
using NS_DOMAIN::TopoNodeHolder;

constexpr const char* kFile = "topomanagementmgr";

// Both views log this text with the name of the protect view; operators filter for the text.
constexpr const char* kViewFailed =
    "[TopoManagementMgr::getProtectSubnetworkViewInfo]: catch processException! errorCode = %d";
constexpr const char* kBaseInfoFailed =
    "[TopoManagementMgr::getTopoSubnetworkViewBaseInfo]: catch processException! errorCode = %d";

constexpr CORBA::ULong kSubnetworkNode = 1;      // Node_T::nodeType of a subnetwork
constexpr std::int32_t kElementParameter = 100;  // nodeParam1 and nodeParam2 of an element node

bool testSwitch() {
  return NS_CORBA::CorbaAgentConfig::Instance()->GetTestSwitch();
}

// Runs a domain query. Logs a ProcessException and returns its code.
template <typename Query>
CORBA::ULong runQuery(const Query& query, std::int32_t line, const char* failureText) {
  try {
    query();
    return 0;
  } catch (ProcessException& failure) {
    topo::logFormat({kFile, line}, NS_CORBA::kLogError, failureText, failure.errorCode);
    return static_cast<CORBA::ULong>(failure.errorCode);
  }
}

// The platform usually delivers ascending numbers, so nothing is sorted then.
std::vector<std::int32_t> sortedNumbers(const std::vector<NEIndex>& indexes) {
  std::vector<std::int32_t> numbers;
  numbers.reserve(indexes.size());
  for (const NEIndex& index : indexes) {
    numbers.push_back(index.number);
  }
  if (!std::is_sorted(numbers.begin(), numbers.end())) {
    std::sort(numbers.begin(), numbers.end());
  }
  return numbers;
}

// The first of the sorted numbers that is not less than `number`. The search begins at `near`, the
// result for another number: a step for ascending numbers, a binary search otherwise.
std::vector<std::int32_t>::const_iterator firstNotLess(
    const std::vector<std::int32_t>& numbers, std::vector<std::int32_t>::const_iterator near,
    std::int32_t number) {
  constexpr int kSteps = 4;
  if (near == numbers.begin() || *std::prev(near) < number) {
    for (int step = 0; step < kSteps; ++step, ++near) {
      if (near == numbers.end() || *near >= number) {
        return near;
      }
    }
  } else {
    return std::lower_bound(numbers.begin(), near, number);
  }
  return std::lower_bound(near, numbers.end(), number);
}

// The indexes of the network elements that the topology does not show.
std::vector<NEIndex> queryIndexesNotShown(DomainFacet* domain) {
  topo::Holder<std::vector<NEIndex>> all;
  topo::Holder<std::vector<NEIndex>> shown;
  NS_DOMAIN::NEData* elements = domain->GetNEData();
  elements->GetNEIndexList(all.get(), false);
  elements->GetNEIndexList(shown.get(), true);
  return TopoManagementMgr::indexesNotShown(*all, *shown);
}

TopoNode_T elementNode(const NE_T& element) {
  TopoNode_T node;
  node.nodeId = std::to_string(element.number);
  node.nodeType = NS_DOMAIN::kTopoElement;
  node.attribute3 = kElementParameter;
  node.attribute4 = kElementParameter;
  node.nativeName = element.name;
  return node;
}

void appendElements(DomainFacet* domain, const std::vector<NEIndex>& indexes,
                    std::vector<TopoNode_T>& nodes) {
  topo::Holder<std::vector<NE_T>> elements;
  domain->GetNEData()->GetNEList(elements.get(), indexes);
  nodes.reserve(nodes.size() + elements->size());
  for (const NE_T& element : *elements) {
    nodes.push_back(elementNode(element));
  }
}

void collectNodes(TopoNodeHolder& nodes) {
  DomainFacet* domain = topo::GetCorbaDomain();
  domain->GetTopoData()->GetAllTopoNodes(&nodes);
  if (testSwitch()) {
    return;
  }
  const std::vector<NEIndex> remaining = queryIndexesNotShown(domain);
  if (!remaining.empty()) {
    appendElements(domain, remaining, nodes.Value());
  }
}

// As collectNodes, but queries the index lists in test mode too.
void collectBaseNodes(TopoNodeHolder& nodes) {
  DomainFacet* domain = topo::GetCorbaDomain();
  domain->GetTopoData()->GetAllTopoNodes(&nodes);
  const std::vector<NEIndex> remaining = queryIndexesNotShown(domain);
  if (!remaining.empty() && !testSwitch()) {
    appendElements(domain, remaining, nodes.Value());
  }
}

// --- Descriptive pairs of subnetwork nodes.

// The module has no file of user labels, so every lookup returns "".
topo::UserLabels<UserlabelMap<TopoNode_T>> userLabels("");

std::string labelOf(const std::string& key) {
  return userLabels.labelOf(key);
}

const char* topologyTypeName(const std::string& code) {
  static constexpr const char* kNames[] = {"Net",          "Tree",        "Star", "Ring",
                                           "SingleDevice", "Point2Point", "Line", "Hybrid"};
  if (code.size() == 1 && code[0] >= '0' && code[0] <= '7') {
    return kNames[code[0] - '0'];
  }
  return "Unknown";
}

struct Placement {
  std::string location;
  std::string topologyType;
};

// The first extended attribute of a domain node is LOCATION or LOCATION||TYPE.
Placement placementOf(const TopoNode_T& domainNode) {
  if (domainNode.extendedAttributes.empty()) {
    return {};
  }
  const std::string& text = domainNode.extendedAttributes.front().second;
  const std::size_t separator = text.find("||");
  if (separator == std::string::npos) {
    return {text, ""};
  }
  return {text.substr(0, separator), topologyTypeName(text.substr(separator + 2))};
}

void addAttributes(TopoManagementManager::Node_T& node, const Placement& placement,
                   const TopoManagementMgr::LabelLookup& lookup) {
  globaldefs::NVSList_T& info = node.additionalInfo;
  const CORBA::ULong n = info.length();
  topo::setLength(info, n + 6);
  // For a node without a name, the index wraps around and at() throws BAD_PARAM.
  const std::string keyBase = topo::at(node.name, node.name.length() - 1).value.in();
  topo::setPair(info, n, "userLabel", lookup(keyBase + "userLabel"));
  topo::setPair(info, n + 1, "Location", placement.location);
  topo::setPair(info, n + 2, "TopoType", placement.topologyType);
  topo::setPair(info, n + 3, topo::kVendorName, topo::kVendorValue);
  topo::setPair(info, n + 4, "SubnetworkBandWidth", lookup(keyBase + "SubnetworkBandWidth"));
  topo::setPair(info, n + 5, "layerRate", lookup(keyBase + "layerRate"));
}

}  // namespace

std::vector<NEIndex> TopoManagementMgr::indexesNotShown(const std::vector<NEIndex>& all,
                                                        const std::vector<NEIndex>& shown) {
  const std::vector<std::int32_t> numbers = sortedNumbers(shown);
  std::vector<NEIndex> remaining;
  auto place = numbers.begin();
  for (const NEIndex& index : all) {
    place = firstNotLess(numbers, place, index.number);
    if (place == numbers.end() || *place != index.number) {
      remaining.push_back(index);
    }
  }
  return remaining;
}

void TopoManagementMgr::addNodeAttributes(TopoManagementManager::NodeList_T& nodes,
                                          const std::vector<TopoNode_T>& domainNodes,
                                          const LabelLookup& lookup) {
  for (CORBA::ULong i = 0; i < nodes.length(); ++i) {
    TopoManagementManager::Node_T& node = topo::at(nodes, i);
    if (node.nodeType == kSubnetworkNode) {
      addAttributes(node, i < domainNodes.size() ? placementOf(domainNodes[i]) : Placement{},
                    lookup);
    }
  }
}

CORBA::ULong TopoManagementMgr::getTopoSubnetworkViewInfo(
    TopoManagementManager::NodeList_T& nodes) {
  topo::Holder<std::vector<TopoNode_T>> domainNodes;
  CORBA::ULong code = runQuery([&] { collectNodes(*domainNodes.get()); }, __LINE__, kViewFailed);
  if (code != 0) {
    return code;
  }
  if (!testSwitch()) {
    return convertAndReleaseDomainNodes(nodes, *domainNodes);
  }
  code = convertDomainNodesToTmf(nodes, *domainNodes);
  if (code == 0) {
    addNodeAttributes(nodes, *domainNodes, labelOf);
  }
  return code;
}

CORBA::ULong TopoManagementMgr::getProtectSubnetworkViewInfo(
    TopoManagementManager::NodeList_T& nodes) {
  topo::Holder<std::vector<TopoNode_T>> domainNodes;
  const CORBA::ULong code =
      runQuery([&] { collectNodes(*domainNodes.get()); }, __LINE__, kViewFailed);
  return code != 0 ? code : convertAndReleaseDomainNodes(nodes, *domainNodes);
}

CORBA::ULong TopoManagementMgr::getTopoSubnetworkViewBaseInfo(TopoNodeHolder& nodes) {
  return runQuery([&] { collectBaseNodes(nodes); }, __LINE__, kBaseInfoFailed);
}
