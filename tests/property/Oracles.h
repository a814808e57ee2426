// Plain loops as oracles for the module and as references for its benchmarks.

#ifndef TESTS_PROPERTY_ORACLES_H
#define TESTS_PROPERTY_ORACLES_H

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

#include "platform/domain/DomainRecords.h"

namespace oracle {

constexpr const char* kRoot = "QNMAP_PHY_SUBMAP";

// The oracle of TopoManagementMgr::indexesNotShown: a nested loop.
inline std::vector<NS_DOMAIN::NEIndex> indexesNotShown(
    const std::vector<NS_DOMAIN::NEIndex>& all, const std::vector<NS_DOMAIN::NEIndex>& shown) {
  std::vector<NS_DOMAIN::NEIndex> remaining;
  for (const NS_DOMAIN::NEIndex& each : all) {
    bool isShown = false;
    for (const NS_DOMAIN::NEIndex& other : shown) {
      isShown = isShown || other.number == each.number;
    }
    if (!isShown) {
      remaining.push_back(each);
    }
  }
  return remaining;
}

// The oracle of TopoManagementMgr::isBelowTopoSubnetwork: a walk with a linear search at every
// step. More steps than nodes mean a cycle.
inline bool isBelow(const std::string& subnetworkId, const std::string& parentId,
                    const std::vector<NS_DOMAIN::TopoNode_T>& nodes) {
  std::string id = parentId;
  for (std::size_t steps = 0; steps <= nodes.size(); ++steps) {
    if (id == subnetworkId) {
      return true;
    }
    if (id == kRoot || id == "0") {
      return false;
    }
    const auto found =
        std::find_if(nodes.begin(), nodes.end(),
                     [&](const NS_DOMAIN::TopoNode_T& node) { return node.nodeId == id; });
    if (found == nodes.end()) {
      return false;
    }
    id = found->parentId;
  }
  return false;
}

}  // namespace oracle

#endif
