#include "agent/domain/NetworkModel.h"

#include <mutex>

namespace agent {

NetworkModel::Indexed::Indexed(Network source) : network(std::move(source)), objects(network) {
  elements.reserve(network.networkElements.size());
  for (std::size_t i = 0; i < network.networkElements.size(); ++i) {
    elements.emplace(network.networkElements[i].number, i);
  }
  for (const ObjectLabel& label : network.objectLabels) {
    labels.emplace(std::make_pair(label.type, label.id), label.label);
  }
  network.objectLabels.clear();
}

std::string& NetworkModel::Indexed::nameAt(const ObjectIndex::Place& place) {
  switch (place.list) {
    case RecordList::kTopoNodes:
      return network.topoNodes[place.index].nativeName;
    case RecordList::kNetworkElements:
      return network.networkElements[place.index].name;
    case RecordList::kClockPositions:
      return network.clockPositions[place.index].label;
    default:
      return network.clockLinks[place.index].nativeName;
  }
}

std::string NetworkModel::Indexed::idAt(const ObjectIndex::Place& place) const {
  switch (place.list) {
    case RecordList::kTopoNodes:
      return network.topoNodes[place.index].nodeId;
    case RecordList::kNetworkElements:
      return std::to_string(network.networkElements[place.index].number);
    case RecordList::kClockPositions:
      return network.clockPositions[place.index].reference;
    default:
      return network.clockLinks[place.index].linkId;
  }
}

NetworkModel::NetworkModel(Network network) : data_(std::move(network)) {}

void NetworkModel::replace(Network network) {
  Indexed data(std::move(network));  // made before the readers have to wait
  const std::unique_lock<std::shared_mutex> lock(mutex_);
  std::swap(data_, data);
}

std::string NetworkModel::ems() const {
  const std::shared_lock<std::shared_mutex> lock(mutex_);
  return data_.network.ems;
}

std::size_t NetworkModel::topoNodeCount() const {
  const std::shared_lock<std::shared_mutex> lock(mutex_);
  return data_.network.topoNodes.size();
}

bool NetworkModel::hasTopoSubnetwork(const std::string& id) const {
  return hasObject({kTopoSubnetworkObjectType, id});
}

bool NetworkModel::hasObject(const ObjectKey& key) const {
  const std::shared_lock<std::shared_mutex> lock(mutex_);
  return data_.objects.contains(key);
}

std::vector<NamedRecord> NetworkModel::recordsOf(const ObjectKey& key) const {
  const std::shared_lock<std::shared_mutex> lock(mutex_);
  std::vector<NamedRecord> records;
  for (const ObjectIndex::Place& place : data_.objects.placesOf(key)) {
    records.push_back({place.list, data_.idAt(place)});
  }
  return records;
}

void NetworkModel::appendTopoNodes(std::vector<NS_DOMAIN::TopoNode_T>& nodes) const {
  const std::shared_lock<std::shared_mutex> lock(mutex_);
  nodes.insert(nodes.end(), data_.network.topoNodes.begin(), data_.network.topoNodes.end());
}

void NetworkModel::appendNEIndexes(std::vector<NS_DOMAIN::NEIndex>& indexes, bool onlyShown) const {
  const std::shared_lock<std::shared_mutex> lock(mutex_);
  for (const NetworkElement& element : data_.network.networkElements) {
    if (element.shown || !onlyShown) {
      indexes.push_back({0, element.number});
    }
  }
}

void NetworkModel::appendNEs(std::vector<NS_DOMAIN::NE_T>& elements,
                             const std::vector<NS_DOMAIN::NEIndex>& indexes) const {
  const std::shared_lock<std::shared_mutex> lock(mutex_);
  for (const NS_DOMAIN::NEIndex& index : indexes) {
    const auto found = data_.elements.find(index.number);
    if (found != data_.elements.end()) {
      NS_DOMAIN::NE_T& element = elements.emplace_back();
      element.first = index.first;
      element.number = index.number;
      element.name = data_.network.networkElements[found->second].name;
    }
  }
}

std::vector<NS_DOMAIN::ClockPositionInfo_T> NetworkModel::clockPositions() const {
  const std::shared_lock<std::shared_mutex> lock(mutex_);
  return data_.network.clockPositions;
}

std::vector<NS_DOMAIN::ClockTopoLinkInfo_T> NetworkModel::clockLinks() const {
  const std::shared_lock<std::shared_mutex> lock(mutex_);
  return data_.network.clockLinks;
}

std::string NetworkModel::labelOf(std::int32_t type, const std::string& id) const {
  const std::shared_lock<std::shared_mutex> lock(mutex_);
  const auto found = data_.labels.find({type, id});
  return found == data_.labels.end() ? std::string() : found->second;
}

void NetworkModel::setLabel(const ObjectKey& key, const std::string& label) {
  const std::unique_lock<std::shared_mutex> lock(mutex_);
  if (label.empty()) {
    data_.labels.erase({key.type, key.id});
  } else {
    data_.labels[{key.type, key.id}] = label;
  }
}

void NetworkModel::setNativeName(const ObjectKey& key, const std::string& name) {
  const std::unique_lock<std::shared_mutex> lock(mutex_);
  for (const ObjectIndex::Place& place : data_.objects.placesOf(key)) {
    data_.nameAt(place) = name;
  }
}

}  // namespace agent
