#include "agent/network/NetworkChecks.h"

#include <cstddef>
#include <future>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "agent/base/FailureCodes.h"
#include "agent/base/PrintableText.h"
#include "hash/SaltedHash.h"

namespace agent {
namespace {

constexpr const char* kObjectAttributes = "objectAttributes";

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

// The position in its list of the record with each key.
template <typename Key>
using Positions = salted::Map<Key, std::size_t, KeyHash>;

// Fills positions, which borrow the texts of the list. Fails for a key that two records have.
template <typename Key, typename Record, typename KeyOf>
Outcome findPositions(Positions<Key>& positions, const std::vector<Record>& records,
                      const char* list, const char* field, KeyOf keyOf) {
  positions.reserve(records.size());
  for (std::size_t i = 0; i < records.size(); ++i) {
    const auto [known, isNew] = positions.emplace(keyOf(records[i]), i);
    if (!isNew) {
      return invalidInput(
          placeOf(list, i, field),
          formatKey(known->first) + " is already that of " + placeOf(list, known->second));
    }
  }
  return {};
}

template <typename Key, typename Record, typename KeyOf>
Outcome checkUnique(const std::vector<Record>& records, const char* list, const char* field,
                    KeyOf keyOf) {
  Positions<Key> positions;
  return findPositions(positions, records, list, field, keyOf);
}

constexpr std::size_t kNoParent = static_cast<std::size_t>(-1);

enum class Parents { kInNetwork, kElsewhereToo };

// The position of the parent of every node; kNoParent for a root and for a parent elsewhere.
Result<std::vector<std::size_t>> parentsOf(const std::vector<NS_DOMAIN::TopoNode_T>& nodes,
                                           const Positions<std::string_view>& positions,
                                           Parents allowed) {
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
      return invalidInput(placeOf("topoNodes", i, ".parent"), inQuotes(parent) + " does not exist");
    }
  }
  return {std::move(parents)};
}

// Walks from every node to its ancestors, and marks each node with the start of its first walk. A
// walk that meets a node with its own mark has found a cycle; a walk that meets another mark ends.
Outcome checkAcyclic(const std::vector<std::size_t>& parents) {
  std::vector<std::size_t> walkOf(parents.size(), kNoParent);
  for (std::size_t start = 0; start < parents.size(); ++start) {
    std::size_t node = start;
    while (node != kNoParent && walkOf[node] == kNoParent) {
      walkOf[node] = start;
      node = parents[node];
    }
    if (node != kNoParent && walkOf[node] == start) {
      return invalidInput(placeOf("topoNodes", node, ".parent"), "makes the node its own ancestor");
    }
  }
  return {};
}

Outcome checkNodes(const std::vector<NS_DOMAIN::TopoNode_T>& nodes, Parents allowed) {
  Positions<std::string_view> positions;
  Outcome unique = findPositions(positions, nodes, "topoNodes", ".id",
                                 [](const auto& node) { return std::string_view(node.nodeId); });
  if (!unique.ok()) {
    return unique;
  }
  const auto parents = parentsOf(nodes, positions, allowed);
  return parents.ok() ? checkAcyclic(parents.value()) : parents.outcome();
}

// Fails if two nodes have the same name for clients, or if an element node has no number.
Outcome checkObjects(const Network& network) {
  const std::vector<NS_DOMAIN::TopoNode_T>& nodes = network.topoNodes;
  salted::Map<NumberedObject, std::size_t, NumberedObjectHash> positions;
  positions.reserve(nodes.size());
  for (std::size_t i = 0; i < nodes.size(); ++i) {
    if (nodes[i].nodeType != NS_DOMAIN::kTopoElement) {
      continue;
    }
    const std::string& id = nodes[i].nodeId;
    if (!hasElementNumber(id)) {
      return invalidInput(placeOf("topoNodes", i, ".id"), problemWithElementId(id));
    }
    const auto object = objectOfElementNode(id);
    const std::size_t first = object ? positions.emplace(*object, i).first->second : i;
    if (first != i) {
      return invalidInput(placeOf("topoNodes", i, ".id"),
                          problemWithSharedObject(id, *object, placeOf("topoNodes", first)));
    }
  }
  return {};
}

Outcome checkElements(const Network& network) {
  return checkUnique<std::int32_t>(network.networkElements, "networkElements", ".number",
                                   [](const auto& element) { return element.number; });
}

Outcome checkClockPositions(const Network& network) {
  return checkUnique<std::string_view>(
      network.clockPositions, "clockPositions", ".reference",
      [](const auto& position) { return std::string_view(position.reference); });
}

Outcome checkClockLinks(const Network& network) {
  return checkUnique<std::string_view>(
      network.clockLinks, "clockLinks", ".id",
      [](const auto& link) { return std::string_view(link.linkId); });
}

Outcome checkLabels(const Network& network) {
  return checkUnique<LabelKey>(network.objectLabels, "objectLabels", "",
                               [](const auto& label) { return LabelKey(label.type, label.id); });
}

// index: the position of the object in objectAttributes.
Outcome checkInfo(const InfoPairs& info, std::size_t index) {
  const std::string place = placeOf(kObjectAttributes, index, ".info");
  if (infoBytes(info) > kMostInfoBytes) {
    return invalidInput(place, "has more than " + std::to_string(kMostInfoBytes) + " bytes");
  }
  Positions<std::string_view> positions;
  for (std::size_t i = 0; i < info.size(); ++i) {
    const char* problem = "";
    if (info[i].first.empty() || info[i].second.empty()) {
      problem = "must have a name and a value";
    } else if (!positions.emplace(info[i].first, i).second) {
      problem = "has a name that is given twice";
    }
    if (*problem != '\0') {
      return invalidInput(place + '[' + std::to_string(i) + ']', problem);
    }
  }
  return {};
}

Outcome checkAttributes(const Network& network) {
  if (!network.objectAttributes) {
    return {};
  }
  const std::vector<ObjectAttributes>& objects = *network.objectAttributes;
  for (std::size_t i = 0; i < objects.size(); ++i) {
    Outcome outcome = checkInfo(objects[i].info, i);
    if (!outcome.ok()) {
      return outcome;
    }
  }
  return checkUnique<LabelKey>(objects, kObjectAttributes, "",
                               [](const auto& object) { return LabelKey(object.type, object.id); });
}

// Checks the nodes of a large network on another thread, because that check takes as long as the
// checks of the other lists.
Outcome check(const Network& network, Parents allowed) {
  constexpr std::size_t kLarge = 10000;
  const bool isLarge = network.topoNodes.size() >= kLarge;
  // Without a free thread, get() checks the nodes.
  std::future<Outcome> nodes =
      std::async(isLarge ? std::launch::async | std::launch::deferred : std::launch::deferred,
                 [&network, allowed] { return checkNodes(network.topoNodes, allowed); });
  Outcome outcome;
  for (const auto checkList : {checkObjects, checkElements, checkClockPositions, checkClockLinks,
                               checkLabels, checkAttributes}) {
    outcome = outcome.ok() ? checkList(network) : outcome;
  }
  Outcome ofNodes = nodes.get();
  return ofNodes.ok() ? outcome : ofNodes;
}

}  // namespace

Outcome checkNetwork(const Network& network) {
  return check(network, Parents::kInNetwork);
}

Outcome checkPart(const Network& network) {
  return check(network, Parents::kElsewhereToo);
}

Outcome invalidInput(const std::string& place, const std::string& reason) {
  return {kInvalidInput, printable(place) + ": " + printable(reason)};
}

std::string problemWithElementId(std::string_view nodeId) {
  return inQuotes(nodeId) + " has no number, which the id of an element needs";
}

std::string problemWithSharedObject(std::string_view nodeId, const NumberedObject& object,
                                    const std::string& other) {
  return inQuotes(nodeId) + " is shown as " + formatObject(keyOf(object)) + ", as " + other + " is";
}

}  // namespace agent
