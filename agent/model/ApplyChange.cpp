// The functions of NetworkTables that apply prepared changes: they neither allocate nor throw.

#include "agent/model/NetworkTables.h"
#include "agent/model/PreparedChange.h"
#include "agent/model/RecordLookup.h"

namespace agent {
namespace {

using Node = NetworkTables::Node;

void append(NetworkTables::Chain& chain, NetworkTables::Neighbours Node::*place,
            Node& node) noexcept {
  (node.*place).previous = chain.last;
  (chain.last == nullptr ? chain.first : (chain.last->*place).next) = &node;
  chain.last = &node;
}

void erase(NetworkTables::Chain& chain, NetworkTables::Neighbours Node::*place,
           Node& node) noexcept {
  Node* const previous = (node.*place).previous;
  Node* const next = (node.*place).next;
  (previous == nullptr ? chain.first : (previous->*place).next) = next;
  (next == nullptr ? chain.last : (next->*place).previous) = previous;
}

void insertAfter(Node* before, NetworkTables::Chain& chain, NetworkTables::Neighbours Node::*place,
                 Node& node) noexcept {
  Node* const after = before == nullptr ? chain.first : (before->*place).next;
  (before == nullptr ? chain.first : (before->*place).next) = &node;
  (after == nullptr ? chain.last : (after->*place).previous) = &node;
  node.*place = {before, after};
}

// Appends `more` to the list. Returns the first new entry.
template <typename Record>
auto spliceTo(std::list<Record>& list, std::list<Record>& more) noexcept {
  const auto first = more.empty() ? list.end() : more.begin();
  list.splice(list.end(), more);
  return first;
}

}  // namespace

void NetworkTables::add(AdditionEffect& addition) noexcept {
  absorb(addition.tables);
  for (Element* const element : addition.marked) {
    element->shown = element->shownForNode = true;
    elementIndex_.update(element->place, *element);
  }
}

void NetworkTables::absorb(NetworkTables& more) noexcept {
  if (ems_.empty()) {
    ems_.swap(more.ems_);
  }
  nodesById_.merge(more.nodesById_);
  elementsByNumber_.merge(more.elementsByNumber_);
  positionsByReference_.merge(more.positionsByReference_);
  linksById_.merge(more.linksById_);
  objects_.merge(more.objects_);
  labels_.merge(more.labels_);
  links_.splice(links_.end(), more.links_);
  const auto node = spliceTo(nodes_, more.nodes_);
  const auto element = spliceTo(elements_, more.elements_);
  const auto position = spliceTo(positions_, more.positions_);
  indexFrom(element);
  findObjectsFrom(node, element, position);
  linkFrom(node, position);
}

// REQUIRES: the index has room for the elements.
void NetworkTables::indexFrom(std::list<Element>::iterator element) noexcept {
  for (; element != elements_.end(); ++element) {
    element->place = elementIndex_.add(*element);
  }
}

// Replaces references to objects of other tables.
void NetworkTables::findObjectsFrom(std::list<Node>::iterator node,
                                    std::list<Element>::iterator element,
                                    std::list<Position>::iterator position) noexcept {
  const auto find = [this](auto& record) {
    record.object = record.shownAs ? recordsOf(*record.shownAs) : nullptr;
  };
  std::for_each(node, nodes_.end(), find);
  std::for_each(position, positions_.end(), find);
  for (; element != elements_.end(); ++element) {
    if (const auto object = objectOf(*element)) {
      recordsOf(*object)->element = &*element;
    }
  }
}

void NetworkTables::linkFrom(std::list<Node>::iterator node,
                             std::list<Position>::iterator position) noexcept {
  std::for_each(node, nodes_.end(), [this](Node& each) { link(each); });
  std::for_each(position, positions_.end(), [](Position& each) { link(each); });
}

// The parent of the previous node first: the children of a parent usually follow each other.
NetworkTables::Node* NetworkTables::parentOf(const Node& node) const noexcept {
  const std::string& parentId = node.record.parentId;
  if (isRootMarker(parentId)) {
    return nullptr;
  }
  if (node.self != nodes_.begin()) {
    const Node& previous = *std::prev(node.self);
    if (previous.parent != nullptr && previous.record.parentId == parentId) {
      return previous.parent;
    }
  }
  return nodeAt(parentId);
}

void NetworkTables::link(Node& node) noexcept {
  node.sequence = ++lastSequence_;
  node.parent = parentOf(node);
  if (node.parent != nullptr) {
    append(node.parent->children, &Node::siblings, node);
  }
  if (node.object != nullptr) {
    append(node.object->nodes, &Node::sameObject, node);
    ++node.object->nodeCount;
  }
}

void NetworkTables::link(Position& position) noexcept {
  if (position.object != nullptr) {
    ObjectRecords& object = *position.object;
    (object.lastPosition == nullptr ? object.firstPosition : object.lastPosition->nextOfObject) =
        &position;
    position.previousOfObject = object.lastPosition;
    object.lastPosition = &position;
  }
}

void NetworkTables::remove(RemovalEffect& removal) noexcept {
  for (Node* const node : removal.doomed) {
    unlink(*node);
    removal.removed.splice(removal.removed.end(), nodes_, node->self);
  }
  for (Element* const element : removal.unmarked) {
    element->shown = element->shownForNode = false;
    elementIndex_.update(element->place, *element);
  }
  for (const ObjectKey& object : removal.labels) {
    labels_.erase(object);
  }
}

void NetworkTables::unlink(Node& node) noexcept {
  const auto entry = nodesById_.find(node.record.nodeId);
  if (entry != nodesById_.end() && entry->second == &node) {
    nodesById_.erase(entry);
  }
  if (node.parent != nullptr) {
    erase(node.parent->children, &Node::siblings, node);
  }
  if (node.object != nullptr) {
    erase(node.object->nodes, &Node::sameObject, node);
    --node.object->nodeCount;
    eraseIfEmpty(*node.shownAs);
  }
}

void NetworkTables::eraseIfEmpty(const NumberedObject& object) noexcept {
  const auto found = objects_.find(object);
  if (found->second.isEmpty()) {
    objects_.erase(found);
  }
}

void NetworkTables::remove(RecordRemovalEffect& removal) noexcept {
  std::visit([this](auto record) { remove(record); }, removal.record);
  for (const ObjectKey& object : removal.labels) {
    labels_.erase(object);
  }
}

void NetworkTables::remove(std::list<Element>::iterator element) noexcept {
  if (const auto object = objectOf(*element)) {
    recordsOf(*object)->element = nullptr;
    eraseIfEmpty(*object);
  }
  elementIndex_.remove(element->place);
  elementsByNumber_.erase(element->number);
  elements_.erase(element);
  if (elementIndex_.isMostlyRemoved()) {
    elementIndex_.clear();
    indexFrom(elements_.begin());
  }
}

void NetworkTables::remove(std::list<Position>::iterator position) noexcept {
  if (position->object != nullptr) {
    ObjectRecords& object = *position->object;
    Position* const previous = position->previousOfObject;
    Position* const next = position->nextOfObject;
    (previous == nullptr ? object.firstPosition : previous->nextOfObject) = next;
    (next == nullptr ? object.lastPosition : next->previousOfObject) = previous;
    eraseIfEmpty(*position->shownAs);
  }
  positionsByReference_.erase(position->record.reference);
  positions_.erase(position);
}

void NetworkTables::remove(std::list<Link>::iterator link) noexcept {
  linksById_.erase(link->linkId);
  links_.erase(link);
}

void NetworkTables::replace(ReplacementEffect& replacement) noexcept {
  std::swap(*this, replacement.tables);
}

// The ids are swapped back, because the keys of the indexes borrow the texts of the present ids.
void NetworkTables::update(NodeUpdate& update) noexcept {
  Node& node = *update.node;
  if (node.parent != nullptr) {
    erase(node.parent->children, &Node::siblings, node);
  }
  node.parent = update.parent;
  if (node.parent != nullptr) {
    insertAfter(update.before, node.parent->children, &Node::siblings, node);
  }
  std::swap(node.record, update.record);
  node.record.nodeId.swap(update.record.nodeId);
}

void NetworkTables::update(ElementUpdate& update) noexcept {
  std::swap(static_cast<NetworkElement&>(*update.place), update.record);
  elementIndex_.update(update.place->place, *update.place);
}

void NetworkTables::update(PositionUpdate& update) noexcept {
  std::swap(*update.place, update.record);
  update.place->reference.swap(update.record.reference);
}

void NetworkTables::update(LinkUpdate& update) noexcept {
  std::swap(*update.place, update.record);
  update.place->linkId.swap(update.record.linkId);
}

void NetworkTables::rename(RenamingEffect& renaming) noexcept {
  for (auto& [place, name] : renaming.names) {
    place->swap(name);
  }
}

void NetworkTables::setLabel(LabelEffect& change) noexcept {
  const auto known = labels_.find(change.key);
  if (change.label.empty()) {
    if (known != labels_.end()) {
      labels_.erase(known);
    }
  } else if (known != labels_.end()) {
    known->second.swap(change.label.begin()->second);
  } else {
    labels_.merge(change.label);
  }
}

void NetworkTables::apply(PreparedChange& change) noexcept {
  if (auto* const addition = std::get_if<AdditionEffect>(&change.effect)) {
    add(*addition);
  } else if (auto* const removal = std::get_if<RemovalEffect>(&change.effect)) {
    remove(*removal);
  } else if (auto* const replacement = std::get_if<ReplacementEffect>(&change.effect)) {
    replace(*replacement);
  } else if (auto* const renaming = std::get_if<RenamingEffect>(&change.effect)) {
    rename(*renaming);
  } else if (auto* const record = std::get_if<RecordRemovalEffect>(&change.effect)) {
    remove(*record);
  } else if (auto* const node = std::get_if<NodeUpdate>(&change.effect)) {
    update(*node);
  } else if (auto* const element = std::get_if<ElementUpdate>(&change.effect)) {
    update(*element);
  } else if (auto* const position = std::get_if<PositionUpdate>(&change.effect)) {
    update(*position);
  } else if (auto* const link = std::get_if<LinkUpdate>(&change.effect)) {
    update(*link);
  } else if (auto* const label = std::get_if<LabelEffect>(&change.effect)) {
    setLabel(*label);
  }
}

}  // namespace agent
