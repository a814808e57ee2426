#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include "conformance/probe/Calls.h"
#include "conformance/probe/Rules.h"
#include "platform/util/UtilCommon.h"

namespace conformance::probe {

using namespace NS_DOMAIN;

namespace {

constexpr int kKind = 10;  // as the module passes
constexpr std::int32_t kUnknownElement = 2147483646;

DomainFacet& facet() {
  auto& domain = required<DomainInterface>("DomainInterface");
  DomainFacet* const found = quietly("GetFacet", [&] { return domain.GetFacet("CORBA"); });
  require(found != nullptr, "GetFacet returns null");
  return *found;
}

std::vector<NEIndex> indexes(bool shown) {
  QueryResult<NEIndexHolder> result;
  platformCall("GetNEIndexList", [&] { neData().GetNEIndexList(result.get(), shown); });
  return result.value();
}

// Queries twice into the same holder.
template <typename Holder, typename Query>
void requireAppends(const std::string& name, Query query) {
  QueryResult<Holder> result;
  platformCall(name, [&] { query(result.get()); });
  const std::size_t count = result.value().size();
  platformCall(name, [&] { query(result.get()); });
  require(result.value().size() == 2 * count, name + " replaces the elements of the holder");
}

void requireReference(const std::string& reference) {
  const std::size_t equals = reference.find('=');
  require(equals != std::string::npos && equals + 1 < reference.size() &&
              reference.find_first_not_of("0123456789", equals + 1) == std::string::npos,
          "the clock reference \"" + reference + "\" is not TEXT=NUMBER");
}

}  // namespace

TopoData& topoData() {
  DomainFacet& source = facet();
  TopoData* const data = quietly("GetTopoData", [&] { return source.GetTopoData(); });
  require(data != nullptr, "GetTopoData returns null");
  return *data;
}

NEData& neData() {
  DomainFacet& source = facet();
  NEData* const data = quietly("GetNEData", [&] { return source.GetNEData(); });
  require(data != nullptr, "GetNEData returns null");
  return *data;
}

std::vector<TopoNode_T> topoNodes() {
  QueryResult<TopoNodeHolder> result;
  platformCall("GetAllTopoNodes", [&] { topoData().GetAllTopoNodes(result.get()); });
  return result.value();
}

std::string subnetworkId() {
  for (const TopoNode_T& node : topoNodes()) {
    if (node.nodeType == kTopoSubnetwork) {
      return node.nodeId;
    }
  }
  throw Skipped("the network has no topology subnetwork");
}

void facetIsComplete() {
  topoData();
  neData();
}

void queriesAppend() {
  QueryResult<IntHolder> count;
  requireAppends<TopoNodeHolder>(
      "GetAllTopoNodes", [](TopoNodeHolder* holder) { topoData().GetAllTopoNodes(holder); });
  requireAppends<ClockPositionHolder>("GetClockPositionList", [&](ClockPositionHolder* holder) {
    topoData().GetClockPositionList(kKind, holder, count.get());
  });
  requireAppends<ClockTopoLinkHolder>("GetClockTopoLinkList", [&](ClockTopoLinkHolder* holder) {
    topoData().GetClockTopoLinkList(kKind, holder, count.get());
  });
  requireAppends<NEIndexHolder>(
      "GetNEIndexList", [](NEIndexHolder* holder) { neData().GetNEIndexList(holder, false); });
  const std::vector<NEIndex> all = indexes(false);
  requireAppends<NEHolder>("GetNEList",
                           [&all](NEHolder* holder) { neData().GetNEList(holder, all); });
}

void parentsHaveNoCycle() {
  std::map<std::string, std::string> parents;
  const std::vector<TopoNode_T> nodes = topoNodes();
  for (const TopoNode_T& node : nodes) {
    require(node.nodeId != kZeroId, "a node has the id 0");
    parents.emplace(node.nodeId, node.parentId);
  }
  for (const TopoNode_T& node : nodes) {
    std::string id = node.nodeId;
    std::size_t steps = 0;
    for (auto parent = parents.find(id); parent != parents.end(); parent = parents.find(id)) {
      id = parent->second;
      require(++steps <= nodes.size(),
              "the parents of the node \"" + node.nodeId + "\" form a cycle");
    }
  }
}

void elementsFollowTheIndexes() {
  const std::vector<NEIndex> all = indexes(false);
  const std::vector<NEIndex> wanted(all.rbegin(), all.rend());
  std::vector<NEIndex> asked = wanted;
  asked.insert(asked.begin(), {0, kUnknownElement});
  QueryResult<NEHolder> result;
  platformCall("GetNEList", [&] { neData().GetNEList(result.get(), asked); });
  const std::vector<NE_T>& records = result.value();
  require(records.size() == wanted.size(), "GetNEList returns " + std::to_string(records.size()) +
                                               " records for " + std::to_string(wanted.size()) +
                                               " elements and an unknown index");
  for (std::size_t i = 0; i < wanted.size(); ++i) {
    require(records[i].number == wanted[i].number,
            "record " + std::to_string(i + 1) + " is that of the element " +
                std::to_string(records[i].number) + ", not of " + std::to_string(wanted[i].number));
  }
}

void shownElementsAreElements() {
  std::set<std::int32_t> all;
  for (const NEIndex& index : indexes(false)) {
    all.insert(index.number);
  }
  for (const NEIndex& index : indexes(true)) {
    require(all.count(index.number) != 0, "the shown element " + std::to_string(index.number) +
                                              " is not in the list of all elements");
  }
}

void clockReferencesHaveNumbers() {
  QueryResult<IntHolder> count;
  QueryResult<ClockPositionHolder> positions;
  QueryResult<ClockTopoLinkHolder> links;
  platformCall("GetClockPositionList",
               [&] { topoData().GetClockPositionList(kKind, positions.get(), count.get()); });
  platformCall("GetClockTopoLinkList",
               [&] { topoData().GetClockTopoLinkList(kKind, links.get(), count.get()); });
  for (const ClockPositionInfo_T& position : positions.value()) {
    requireReference(position.reference);
  }
  for (const ClockTopoLinkInfo_T& link : links.value()) {
    requireReference(link.aEndReference);
    requireReference(link.zEndReference);
  }
}

}  // namespace conformance::probe
