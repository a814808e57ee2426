// A managed network as plain values: what a network file says, what a store keeps, what the model
// serves. The order of every list is part of the value.
//
// Of the platform's records only those fields carry data that a network file can set; the others
// keep their defaults and are not stored.

#ifndef AGENT_NETWORK_NETWORK_H
#define AGENT_NETWORK_NETWORK_H

#include <cstdint>
#include <string>
#include <vector>

#include "platform/domain/DomainRecords.h"

namespace agent {

// Whether a parent id names no node of the network: no parent, or the physical root map.
inline bool isRootMarker(const std::string& parentId) {
  return NS_DOMAIN::hasNoParent(parentId) || parentId == NS_DOMAIN::kPhysicalRoot;
}

struct NetworkElement {
  std::int32_t number = 0;
  std::string name;
  bool shown = false;         // the topology shows it already, as a node of its own
  bool shownForNode = false;  // shown is set because it got a node at run time, and ends with that
};

// A stored label of an object; type and id together say which.
struct ObjectLabel {
  std::int32_t type = 0;
  std::string id;
  std::string label;
};

// The lists of a network whose records have a name.
enum class RecordList { kTopoNodes, kNetworkElements, kClockPositions, kClockLinks };

// One record of a network, by the id that it has in its list; an element's number as text.
struct NamedRecord {
  RecordList list;
  std::string id;
};

struct Network {
  std::string ems;
  std::vector<NS_DOMAIN::TopoNode_T> topoNodes;
  std::vector<NetworkElement> networkElements;
  std::vector<NS_DOMAIN::ClockPositionInfo_T> clockPositions;
  std::vector<NS_DOMAIN::ClockTopoLinkInfo_T> clockLinks;
  std::vector<ObjectLabel> objectLabels;
};

}  // namespace agent

#endif
