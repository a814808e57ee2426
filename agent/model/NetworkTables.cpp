#include "agent/model/NetworkTables.h"

#include <algorithm>
#include <stdexcept>

#include "agent/model/PreparedChange.h"
#include "agent/model/RecordLookup.h"

namespace agent {

NetworkTables::NetworkTables(Network network) : NetworkTables(std::move(network), Unlinked()) {
  linkFrom(nodes_.begin(), positions_.begin());
}

NetworkTables::NetworkTables(Network network, Unlinked) {
  reserve(sizesOf(network));
  auto nextNode = nodes_.begin();
  add(network, nextNode);
}

NetworkTables::NetworkTables(NetworkSource& source) {
  reserve(source.sizes());
  auto nextNode = nodes_.begin();
  while (std::optional<Network> piece = source.next()) {
    add(*piece, nextNode);
  }
  linkFrom(nodes_.begin(), positions_.begin());
}

// nextNode: the node at which the search for the node of the next element begins. Advanced, for the
// next piece.
void NetworkTables::add(Network& piece, std::list<Node>::iterator& nextNode) {
  ems_ += piece.ems;
  const bool isFirst = nodes_.empty();
  addNodes(piece.topoNodes);
  if (isFirst) {
    nextNode = nodes_.begin();
  }
  addElements(piece.networkElements, nextNode);
  addClock(piece.clockPositions, piece.clockLinks);
  for (ObjectLabel& label : piece.objectLabels) {
    labels_.emplace(ObjectKey{label.type, std::move(label.id)}, std::move(label.label));
  }
}

void NetworkTables::reserve(const NetworkSizes& sizes) {
  objects_.reserve(std::max({sizes.nodes, sizes.elements, sizes.positions}));
  nodesById_.reserve(sizes.nodes);
  elementsByNumber_.reserve(sizes.elements);
  elementIndex_.makeRoom(sizes.elements);
  positionsByReference_.reserve(sizes.positions);
  linksById_.reserve(sizes.links);
}

void NetworkTables::addNodes(std::vector<NS_DOMAIN::TopoNode_T>& records) {
  for (NS_DOMAIN::TopoNode_T& record : records) {
    Node& node = nodes_.emplace_back();
    node.record = std::move(record);
    node.self = std::prev(nodes_.end());
    nodesById_.emplace(node.record.nodeId, &node);
    if (node.record.nodeType == NS_DOMAIN::kTopoElement) {
      node.shownAs = objectOfElementNode(node.record.nodeId);
      node.object = addObject(node.shownAs);
    }
  }
}

void NetworkTables::addElements(std::vector<NetworkElement>& records,
                                std::list<Node>::iterator& nextNode) {
  elementIndex_.makeRoom(records.size());
  for (NetworkElement& record : records) {
    Element& element = elements_.emplace_back();
    static_cast<NetworkElement&>(element) = std::move(record);
    element.place = elementIndex_.add(element);
    elementsByNumber_.emplace(element.number, std::prev(elements_.end()));
    if (ObjectRecords* const object = addObject(objectOf(element), nextNode)) {
      object->element = &element;
    }
  }
}

void NetworkTables::addClock(std::vector<NS_DOMAIN::ClockPositionInfo_T>& positions,
                             std::vector<NS_DOMAIN::ClockTopoLinkInfo_T>& links) {
  for (NS_DOMAIN::ClockPositionInfo_T& record : positions) {
    Position& position = positions_.emplace_back();
    position.record = std::move(record);
    position.self = std::prev(positions_.end());
    positionsByReference_.emplace(position.record.reference, &position);
    position.shownAs = objectOfClockReference(position.record.reference);
    position.object = addObject(position.shownAs);
  }
  for (NS_DOMAIN::ClockTopoLinkInfo_T& record : links) {
    const Link& link = links_.emplace_back(std::move(record));
    linksById_.emplace(link.linkId, std::prev(links_.end()));
  }
}

// Returns the records of the object, or null without an object.
NetworkTables::ObjectRecords* NetworkTables::addObject(
    const std::optional<NumberedObject>& object) {
  return object ? &objects_.try_emplace(*object).first->second : nullptr;
}

// The same, but searches the nodes from `next` first, because elements usually have the order of
// their nodes. Moves `next` behind the node of the object, or to the next node of an object.
NetworkTables::ObjectRecords* NetworkTables::addObject(const std::optional<NumberedObject>& object,
                                                       std::list<Node>::iterator& next) {
  constexpr int kMostSteps = 4;
  next =
      std::find_if(next, nodes_.end(), [](const Node& node) { return node.shownAs.has_value(); });
  auto node = next;
  for (int step = 0; object && node != nodes_.end() && step < kMostSteps; ++step, ++node) {
    if (node->shownAs == object) {
      next = std::next(node);
      return node->object;
    }
  }
  return addObject(object);
}

NetworkTables::Node* NetworkTables::nodeAt(std::string_view id) const {
  return recordIn(nodesById_, id);
}

const NS_DOMAIN::TopoNode_T* NetworkTables::node(std::string_view id) const {
  const Node* const found = nodeAt(id);
  return found == nullptr ? nullptr : &found->record;
}

const NS_DOMAIN::TopoNode_T* NetworkTables::nodeShownAs(const NumberedObject& object) const {
  const ObjectRecords* const records = recordsOf(object);
  const bool hasNode = records != nullptr && records->nodes.first != nullptr;
  return hasNode ? &records->nodes.first->record : nullptr;
}

const NetworkElement* NetworkTables::element(std::int32_t number) const {
  return recordIn(elementsByNumber_, number);
}

const std::string* NetworkTables::label(const ObjectKey& key) const {
  const auto found = labels_.find(key);
  return found == labels_.end() ? nullptr : &found->second;
}

const NS_DOMAIN::ClockPositionInfo_T* NetworkTables::clockPosition(
    std::string_view reference) const {
  const Position* const found = recordIn(positionsByReference_, reference);
  return found == nullptr ? nullptr : &found->record;
}

const NetworkTables::Link* NetworkTables::clockLink(std::string_view id) const {
  return recordIn(linksById_, id);
}

bool NetworkTables::hasObject(const ObjectKey& key) const {
  if (key.type == kTopoSubnetworkObjectType) {
    const Node* const found = nodeAt(key.id);
    return found != nullptr && found->record.nodeType == NS_DOMAIN::kTopoSubnetwork;
  }
  if (key.type == kClockLinkObjectType) {
    return clockLink(key.id) != nullptr;
  }
  const auto object = numberedObject(key);
  return object && recordsOf(*object) != nullptr;
}

std::optional<ObjectView> NetworkTables::object(const ObjectKey& key) const {
  if (!hasObject(key)) {
    return std::nullopt;
  }
  ObjectView view;
  if (const std::string* const text = label(key)) {
    view.label = *text;
  }
  if (key.type == kTopoSubnetworkObjectType) {
    view.nodes.push_back(nodeAt(key.id)->record);
  } else if (key.type == kClockLinkObjectType) {
    view.link = *clockLink(key.id);
  } else {
    const ObjectRecords& records = *recordsOf(*numberedObject(key));
    for (const Node* node = records.nodes.first; node != nullptr; node = node->sameObject.next) {
      view.nodes.push_back(node->record);
    }
    if (records.element != nullptr) {
      view.element = *records.element;
    }
    for (const Position* position = records.firstPosition; position != nullptr;
         position = position->nextOfObject) {
      view.positions.push_back(position->record);
    }
  }
  return view;
}

const NetworkTables::ObjectRecords* NetworkTables::recordsOf(const NumberedObject& object) const {
  const auto found = objects_.find(object);
  return found == objects_.end() ? nullptr : &found->second;
}

NetworkTables::ObjectRecords* NetworkTables::recordsOf(const NumberedObject& object) {
  const auto found = objects_.find(object);
  return found == objects_.end() ? nullptr : &found->second;
}

bool NetworkTables::isWithin(const std::string& nodeId, const std::string& ancestorId) const {
  const Node* const ancestor = nodeAt(ancestorId);
  std::size_t steps = 0;
  for (const Node* node = nodeAt(nodeId); node != nullptr; node = node->parent) {
    if (node == ancestor) {
      return true;
    }
    if (++steps > nodes_.size()) {
      throw std::runtime_error("a node above it is its own ancestor");
    }
  }
  return false;
}

}  // namespace agent
