#include "agent/domain/ObjectIndex.h"

#include <algorithm>
#include <tuple>

namespace agent {
namespace {

auto orderOf(const NumberedObject& object) {
  return std::make_tuple(object.type, object.number);
}

}  // namespace

ObjectIndex::ObjectIndex(const Network& network) {
  addNodes(network);
  for (std::size_t i = 0; i < network.networkElements.size(); ++i) {
    const std::int32_t number = network.networkElements[i].number;
    if (number >= 0) {
      add(NumberedObject{kManagedElementType, number}, RecordList::kNetworkElements, i);
    }
  }
  addClock(network);
  std::sort(numbered_.begin(), numbered_.end(),
            [](const NumberedPlace& a, const NumberedPlace& b) { return precedes(a, b.object); });
}

bool ObjectIndex::contains(const ObjectKey& key) const {
  if (key.type == kTopoSubnetworkObjectType) {
    return subnetworks_.count(key.id) != 0;
  }
  if (key.type == kClockLinkObjectType) {
    return clockLinks_.count(key.id) != 0;
  }
  const auto object = numberedObject(key);
  if (!object) {
    return false;
  }
  const auto place = std::lower_bound(numbered_.begin(), numbered_.end(), *object, precedes);
  return place != numbered_.end() && orderOf(place->object) == orderOf(*object);
}

std::vector<ObjectIndex::Place> ObjectIndex::placesOf(const ObjectKey& key) const {
  if (!contains(key)) {
    return {};
  }
  if (key.type == kTopoSubnetworkObjectType) {
    return {{RecordList::kTopoNodes, subnetworks_.at(key.id)}};
  }
  if (key.type == kClockLinkObjectType) {
    return {{RecordList::kClockLinks, clockLinks_.at(key.id)}};
  }
  std::vector<Place> places;
  const NumberedObject object = *numberedObject(key);
  auto place = std::lower_bound(numbered_.begin(), numbered_.end(), object, precedes);
  for (; place != numbered_.end() && orderOf(place->object) == orderOf(object); ++place) {
    places.push_back(place->place);
  }
  return places;
}

bool ObjectIndex::precedes(const NumberedPlace& place, const NumberedObject& object) {
  return orderOf(place.object) < orderOf(object);
}

void ObjectIndex::addNodes(const Network& network) {
  for (std::size_t i = 0; i < network.topoNodes.size(); ++i) {
    const NS_DOMAIN::TopoNode_T& node = network.topoNodes[i];
    if (node.nodeType == NS_DOMAIN::kTopoSubnetwork) {
      subnetworks_.emplace(node.nodeId, i);
    } else if (node.nodeType == NS_DOMAIN::kTopoElement) {
      add(objectOfElementNode(node.nodeId), RecordList::kTopoNodes, i);
    }
  }
}

void ObjectIndex::addClock(const Network& network) {
  for (std::size_t i = 0; i < network.clockPositions.size(); ++i) {
    add(objectOfClockReference(network.clockPositions[i].reference), RecordList::kClockPositions,
        i);
  }
  for (std::size_t i = 0; i < network.clockLinks.size(); ++i) {
    clockLinks_.emplace(network.clockLinks[i].linkId, i);
  }
}

void ObjectIndex::add(const std::optional<NumberedObject>& object, RecordList list,
                      std::size_t index) {
  if (object) {
    numbered_.push_back({*object, {list, index}});
  }
}

}  // namespace agent
