#include "agent/network/NetworkChecks.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "agent/base/Text.h"
#include "agent/network/NetworkError.h"
#include "hash/SaltedHash.h"

namespace agent {
namespace {

using LabelKey = std::pair<std::int32_t, std::string_view>;

struct KeyHash : salted::Hash {
  using salted::Hash::operator();
  std::size_t operator()(const LabelKey& key) const {
    return (*this)((*this)(key.second) ^ (*this)(key.first));
  }
};

std::string formatKey(std::int32_t key) {
  return std::to_string(key);
}
std::string formatKey(std::string_view key) {
  return inQuotes(key);
}
std::string formatKey(const LabelKey& key) {
  return formatKey(key.first) + ' ' + formatKey(key.second);
}

// Where each key of a list stands.
template <typename Key>
using Positions = salted::Map<Key, std::size_t, KeyHash>;

// Borrows the texts of the list.
template <typename Key, typename Record, typename KeyOf>
Positions<Key> uniquePositions(const std::vector<Record>& records, const char* list,
                               const char* field, KeyOf keyOf) {
  Positions<Key> positions;
  positions.reserve(records.size());
  for (std::size_t i = 0; i < records.size(); ++i) {
    const auto [known, isNew] = positions.emplace(keyOf(records[i]), i);
    if (!isNew) {
      throw Refusal{placeOf(list, i, field), formatKey(known->first) + " is already that of " +
                                                 placeOf(list, known->second)};
    }
  }
  return positions;
}

constexpr std::size_t kNoParent = static_cast<std::size_t>(-1);

// Where parents may be.
enum class Parents { kInNetwork, kElsewhereToo };

// The position of every node's parent; kNoParent for a root and for a parent elsewhere.
std::vector<std::size_t> parentsOf(const std::vector<NS_DOMAIN::TopoNode_T>& nodes,
                                   const Positions<std::string_view>& positions, Parents allowed) {
  std::vector<std::size_t> parents(nodes.size(), kNoParent);
  for (std::size_t i = 0; i < nodes.size(); ++i) {
    const std::string& parent = nodes[i].parentId;
    if (isRootMarker(parent)) {
      continue;
    }
    const auto found = positions.find(parent);
    if (found != positions.end()) {
      parents[i] = found->second;
    } else if (allowed == Parents::kInNetwork) {
      throw Refusal{placeOf("topoNodes", i, ".parent"), inQuotes(parent) + " does not exist"};
    }
  }
  return parents;
}

// Walks up from every node, each node once: a walk that meets its own trail has found a cycle, one
// that meets an older trail goes where that went.
void requireNoCycle(const std::vector<std::size_t>& parents) {
  std::vector<std::size_t> trailOf(parents.size(), kNoParent);
  for (std::size_t start = 0; start < parents.size(); ++start) {
    std::size_t node = start;
    while (node != kNoParent && trailOf[node] == kNoParent) {
      trailOf[node] = start;
      node = parents[node];
    }
    if (node != kNoParent && trailOf[node] == start) {
      throw Refusal{placeOf("topoNodes", node, ".parent"), "makes the node its own ancestor"};
    }
  }
}

void check(const Network& network, Parents allowed) {
  const auto nodes = uniquePositions<std::string_view>(
      network.topoNodes, "topoNodes", ".id",
      [](const auto& node) { return std::string_view(node.nodeId); });
  requireNoCycle(parentsOf(network.topoNodes, nodes, allowed));
  uniquePositions<std::int32_t>(network.networkElements, "networkElements", ".number",
                                [](const auto& element) { return element.number; });
  uniquePositions<std::string_view>(
      network.clockPositions, "clockPositions", ".reference",
      [](const auto& position) { return std::string_view(position.reference); });
  uniquePositions<std::string_view>(network.clockLinks, "clockLinks", ".id",
                                    [](const auto& link) { return std::string_view(link.linkId); });
  uniquePositions<LabelKey>(network.objectLabels, "objectLabels", "",
                            [](const auto& label) { return LabelKey(label.type, label.id); });
}

}  // namespace

void checkNetwork(const Network& network) {
  check(network, Parents::kInNetwork);
}

void checkPart(const Network& network) {
  check(network, Parents::kElsewhereToo);
}

std::string placeOf(const char* list, std::size_t index, const char* field) {
  return std::string(list) + '[' + std::to_string(index) + ']' + field;
}

}  // namespace agent
