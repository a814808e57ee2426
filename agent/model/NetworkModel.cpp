#include "agent/model/NetworkModel.h"

#include <utility>

#include "platform/agent/CorbaUtilInterface.h"

namespace agent {
namespace {

std::size_t textsOf(const NS_DOMAIN::TopoNode_T& node) {
  std::size_t bytes = node.nodeId.size() + node.parentId.size() + node.nativeName.size();
  for (const auto& [key, value] : node.extendedAttributes) {
    bytes += key.size() + value.size();
  }
  return bytes;
}

std::size_t textsOf(const NS_DOMAIN::ClockPositionInfo_T& position) {
  return position.reference.size() + position.text4.size() + position.label.size();
}

std::size_t textsOf(const NS_DOMAIN::ClockTopoLinkInfo_T& link) {
  return link.linkId.size() + link.text4.size() + link.nativeName.size() +
         link.aEndReference.size() + link.text7.size() + link.text9.size() +
         link.zEndReference.size() + link.text11.size() + link.text13.size();
}

template <typename Record>
std::optional<Record> copyOf(const Record* record) {
  return record == nullptr ? std::nullopt : std::optional(*record);
}

void count(NetworkLoad::Records& records, std::size_t texts) {
  ++records.count;
  records.texts += texts;
}

// Whether the module can name the node and its parent, so that the topology view has the node.
bool isNamed(const NetworkTables::Node& node) {
  const NS_DOMAIN::TopoNode_T& record = node.record;
  const bool isElement = record.nodeType == NS_DOMAIN::kTopoElement;
  if (record.nodeId == NS_DOMAIN::kZeroId ||
      (isElement ? !node.shownAs : record.nodeType != NS_DOMAIN::kTopoSubnetwork)) {
    return false;
  }
  return NS_DOMAIN::hasNoParent(record.parentId) ||
         record.parentType == NS_DOMAIN::kTopoSubnetwork ||
         (record.parentType == NS_DOMAIN::kTopoElement && objectOfElementNode(record.parentId));
}

}  // namespace

NetworkModel::NetworkModel(Network network) : data_(std::move(network)) {}

NetworkModel::NetworkModel(NetworkSource& source) : data_(source) {}

std::string NetworkModel::ems() const {
  const ReadLock lock(mutex_);
  return data_.ems();
}

std::size_t NetworkModel::topoNodeCount() const {
  const ReadLock lock(mutex_);
  return data_.nodes().size();
}

bool NetworkModel::hasTopoSubnetwork(const std::string& id) const {
  return hasObject({kTopoSubnetworkObjectType, id});
}

bool NetworkModel::hasObject(const ObjectKey& key) const {
  const ReadLock lock(mutex_);
  return data_.hasObject(key);
}

bool NetworkModel::hasTopoNode(const std::string& id) const {
  const ReadLock lock(mutex_);
  return data_.node(id) != nullptr;
}

bool NetworkModel::hasNetworkElement(std::int32_t number) const {
  const ReadLock lock(mutex_);
  return data_.element(number) != nullptr;
}

bool NetworkModel::hasClockPosition(const std::string& reference) const {
  const ReadLock lock(mutex_);
  return data_.clockPosition(reference) != nullptr;
}

bool NetworkModel::hasClockLink(const std::string& id) const {
  const ReadLock lock(mutex_);
  return data_.clockLink(id) != nullptr;
}

bool NetworkModel::hasLabel(const ObjectKey& key) const {
  const ReadLock lock(mutex_);
  return data_.label(key) != nullptr;
}

std::optional<NS_DOMAIN::TopoNode_T> NetworkModel::topoNode(const std::string& id) const {
  const ReadLock lock(mutex_);
  return copyOf(data_.node(id));
}

std::optional<NetworkElement> NetworkModel::networkElement(std::int32_t number) const {
  const ReadLock lock(mutex_);
  return copyOf(data_.element(number));
}

std::optional<NS_DOMAIN::ClockPositionInfo_T> NetworkModel::clockPosition(
    const std::string& reference) const {
  const ReadLock lock(mutex_);
  return copyOf(data_.clockPosition(reference));
}

std::optional<NS_DOMAIN::ClockTopoLinkInfo_T> NetworkModel::clockLink(const std::string& id) const {
  const ReadLock lock(mutex_);
  return copyOf(data_.clockLink(id));
}

std::optional<ObjectView> NetworkModel::object(const ObjectKey& key) const {
  const ReadLock lock(mutex_);
  return data_.object(key);
}

bool NetworkModel::isWithin(const std::string& nodeId, const std::string& ancestorId) const {
  const ReadLock lock(mutex_);
  return data_.isWithin(nodeId, ancestorId);
}

std::optional<std::string> NetworkModel::nodeShownAs(const NumberedObject& object) const {
  const ReadLock lock(mutex_);
  const NS_DOMAIN::TopoNode_T* const node = data_.nodeShownAs(object);
  return node == nullptr ? std::nullopt : std::optional(node->nodeId);
}

void NetworkModel::appendTopoNodes(std::vector<NS_DOMAIN::TopoNode_T>& nodes) const {
  const ReadLock lock(mutex_);
  nodes.reserve(nodes.size() + data_.nodes().size());
  for (const NetworkTables::Node& node : data_.nodes()) {
    nodes.push_back(node.record);
  }
}

void NetworkModel::appendNEIndexes(std::vector<NS_DOMAIN::NEIndex>& indexes, bool onlyShown) const {
  const ReadLock lock(mutex_);
  data_.elementIndex().appendTo(indexes, onlyShown);
}

void NetworkModel::appendNEs(std::vector<NS_DOMAIN::NE_T>& elements,
                             const std::vector<NS_DOMAIN::NEIndex>& indexes) const {
  const ReadLock lock(mutex_);
  elements.reserve(elements.size() + indexes.size());
  for (const NS_DOMAIN::NEIndex& index : indexes) {
    if (const NetworkElement* const known = data_.element(index.number)) {
      NS_DOMAIN::NE_T& element = elements.emplace_back();
      element.first = index.first;
      element.number = index.number;
      element.name = known->name;
    }
  }
}

std::vector<NS_DOMAIN::ClockPositionInfo_T> NetworkModel::clockPositions() const {
  const ReadLock lock(mutex_);
  std::vector<NS_DOMAIN::ClockPositionInfo_T> positions;
  positions.reserve(data_.positions().size());
  for (const NetworkTables::Position& position : data_.positions()) {
    positions.push_back(position.record);
  }
  return positions;
}

std::vector<NS_DOMAIN::ClockTopoLinkInfo_T> NetworkModel::clockLinks() const {
  const ReadLock lock(mutex_);
  std::vector<NS_DOMAIN::ClockTopoLinkInfo_T> links;
  links.reserve(data_.links().size());
  for (const NS_DOMAIN::ClockTopoLinkInfo_T& link : data_.links()) {
    links.push_back(link);
  }
  return links;
}

std::string NetworkModel::labelOf(std::int32_t type, const std::string& id) const {
  const ReadLock lock(mutex_);
  const std::string* const label = data_.label({type, id});
  return label == nullptr ? std::string() : *label;
}

NetworkLoad NetworkModel::load() const {
  NetworkLoad load;
  const ReadLock lock(mutex_);
  for (const NetworkTables::Node& node : data_.nodes()) {
    count(load.nodes, textsOf(node.record));
    load.nodes.named += isNamed(node) ? 1 : 0;
  }
  for (const NetworkElement& element : data_.elements()) {
    if (!element.shown) {
      count(load.elements, element.name.size());
      load.elements.named += element.number > 0 ? 1 : 0;
    }
  }
  for (const NetworkTables::Position& position : data_.positions()) {
    count(load.positions, textsOf(position.record));
  }
  for (const NS_DOMAIN::ClockTopoLinkInfo_T& link : data_.links()) {
    const std::string* const label =
        data_.label({NS_CORBA::CorbaUtilInterface::kClockTopoLinkType, link.linkId});
    count(load.links, textsOf(link) + (label == nullptr ? 0 : label->size()));
  }
  return load;
}

// Making room may move entries of the indexes, so the write lock keeps readers out.
PreparedChange NetworkModel::prepareAddition(Network network) {
  PreparedChange addition = tablesFor(std::move(network));
  const WriteLock lock(mutex_);
  data_.makeRoomFor(addition);
  return addition;
}

PreparedChange NetworkModel::tablesFor(Network network) const {
  const ReadLock lock(mutex_);
  return data_.prepareAddition(std::move(network));
}

PreparedChange NetworkModel::prepareRemoval(const std::string& nodeId) const {
  const ReadLock lock(mutex_);
  return data_.prepareRemoval(nodeId);
}

PreparedChange NetworkModel::prepareRenaming(const ObjectKey& key, const std::string& name) {
  const ReadLock lock(mutex_);
  return data_.prepareRenaming(key, name);
}

PreparedChange NetworkModel::prepareNodeRenaming(const std::string& nodeId,
                                                 const std::string& name) {
  const ReadLock lock(mutex_);
  return data_.prepareNodeRenaming(nodeId, name);
}

PreparedChange NetworkModel::prepareReplacement(Network network) const {
  const ReadLock lock(mutex_);
  return data_.prepareReplacement(std::move(network));
}

PreparedChange NetworkModel::prepareElementRenaming(std::int32_t number, const std::string& name) {
  const ReadLock lock(mutex_);
  return data_.prepareElementRenaming(number, name);
}

PreparedChange NetworkModel::prepareElementRemoval(std::int32_t number) const {
  const ReadLock lock(mutex_);
  return data_.prepareElementRemoval(number);
}

PreparedChange NetworkModel::preparePositionRemoval(const std::string& reference) const {
  const ReadLock lock(mutex_);
  return data_.preparePositionRemoval(reference);
}

PreparedChange NetworkModel::prepareLinkRemoval(const std::string& id) const {
  const ReadLock lock(mutex_);
  return data_.prepareLinkRemoval(id);
}

PreparedChange NetworkModel::prepareUpdate(AnyRecord record) const {
  const ReadLock lock(mutex_);
  return data_.prepareUpdate(std::move(record));
}

PreparedChange NetworkModel::prepareLabel(const ObjectKey& key, const std::string& label) {
  LabelEffect effect{key, {}};
  if (!label.empty()) {
    effect.label.emplace(key, label);
  }
  return {LabelChange{key, label}, std::move(effect)};
}

PreparedChange NetworkModel::prepareAttributeRemoval(const ObjectKey& key) {
  return {AttributeRemoval{key}, LabelEffect{key, {}}};
}

void NetworkModel::apply(PreparedChange& change) noexcept {
  if (std::holds_alternative<std::monostate>(change.effect)) {
    return;
  }
  const WriteLock lock(mutex_);
  data_.apply(change);
  ++version_;
}

}  // namespace agent
