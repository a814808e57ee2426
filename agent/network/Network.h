// A managed network as plain values: the content of a network file, of a store and of the model.
// The order of every list is part of the value.
//
// Only the fields that a network file can set are used in the platform's records. The other fields
// have their defaults and are not stored.

#ifndef AGENT_NETWORK_NETWORK_H
#define AGENT_NETWORK_NETWORK_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "agent/base/TextChecks.h"
#include "platform/domain/DomainRecords.h"

namespace agent {

// True for a parent id that does not refer to a node of the network: "no parent", or the physical
// root map.
inline bool isRootMarker(const std::string& parentId) {
  return NS_DOMAIN::hasNoParent(parentId) || parentId == NS_DOMAIN::kPhysicalRoot;
}

struct NetworkElement {
  std::int32_t number = 0;
  std::string name;
  bool shown = false;         // a topology node shows the element
  bool shownForNode = false;  // shown was set for a node added at run time; ends with that node
};

// A stored label. type and id form the key of the object.
struct ObjectLabel {
  std::int32_t type = 0;
  std::string id;
  std::string label;
};

// Additional information: names and values.
using InfoPairs = std::vector<std::pair<std::string, std::string>>;

// Added to the size of the texts of each pair in infoBytes(), because a pair of short texts takes
// many times the memory of its texts, and each change takes time for each pair.
constexpr std::size_t kInfoPairBytes = 64;

// The largest additional information of one object by infoBytes(). A reply contains all of it, and
// the default limit of a message is 256 MiB.
constexpr std::size_t kMostInfoBytes = 16 * kMostTextBytes;

inline std::size_t infoBytes(const InfoPairs& pairs) {
  std::size_t bytes = 0;
  for (const auto& [name, value] : pairs) {
    bytes += kInfoPairBytes + name.size() + value.size();
  }
  return bytes;
}

// The owner and the additional information of an object, which need not exist. type and id form the
// key of the object.
struct ObjectAttributes {
  std::int32_t type = 0;
  std::string id;
  std::string owner;  // empty: none
  InfoPairs info;     // every name once; no empty name or value
};

// The lists of records with a name.
enum class RecordList { kTopoNodes, kNetworkElements, kClockPositions, kClockLinks };

// Identifies one record by its id in the list; the id of an element is its number as text.
struct NamedRecord {
  RecordList list;
  std::string id;
};

// A record of one of these lists.
using AnyRecord = std::variant<NS_DOMAIN::TopoNode_T, NetworkElement,
                               NS_DOMAIN::ClockPositionInfo_T, NS_DOMAIN::ClockTopoLinkInfo_T>;

struct Network {
  std::string ems;
  std::vector<NS_DOMAIN::TopoNode_T> topoNodes;
  std::vector<NetworkElement> networkElements;
  std::vector<NS_DOMAIN::ClockPositionInfo_T> clockPositions;
  std::vector<NS_DOMAIN::ClockTopoLinkInfo_T> clockLinks;
  std::vector<ObjectLabel> objectLabels;
  // Read from a file with this list, or for an export. No value: stored attributes do not change.
  std::optional<std::vector<ObjectAttributes>> objectAttributes;
};

}  // namespace agent

#endif
