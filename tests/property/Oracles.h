// Plain loops that say what the module must find, and that it is measured against.

#ifndef TESTS_PROPERTY_ORACLES_H
#define TESTS_PROPERTY_ORACLES_H

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

#include "platform/domain/DomainRecords.h"

namespace oracle {

constexpr const char* kRoot = "QNMAP_PHY_SUBMAP";

// TopoManagementMgr::indexesNotShown: the plain nested loop.
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

// TopoManagementMgr::isBelowTopoSubnetwork: the plain walk, a search of the whole list at every
// step. More steps than there are nodes mean that it goes round.
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
