#include "agent/model/NetworkTables.h"

#include <algorithm>
#include <stdexcept>
#include <unordered_map>
#include <unordered_set>

#include "agent/model/PreparedChange.h"

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

// Reserves memory for `more` entries. Grows by half at least, because reserve() allocates exactly
// the requested number of buckets, and a series of small additions would rehash again and again.
template <typename Map>
void makeRoom(Map& map, std::size_t more) {
  const std::size_t needed = map.size() + more;
  if (static_cast<float>(needed) >=
      static_cast<float>(map.bucket_count()) * map.max_load_factor()) {
    map.reserve(std::max(needed, map.size() + map.size() / 2));
  }
}

// Whether all stored fields are the same.
bool isSame(const NS_DOMAIN::TopoNode_T& a, const NS_DOMAIN::TopoNode_T& b) {
  return a.nodeId == b.nodeId && a.parentId == b.parentId && a.nativeName == b.nativeName &&
         a.nodeType == b.nodeType && a.parentType == b.parentType && a.attribute3 == b.attribute3 &&
         a.attribute4 == b.attribute4 && a.extendedAttributes == b.extendedAttributes;
}

// The record of a key, null without one. The map has pointers or iterators.
template <typename Map>
auto recordIn(const Map& map, const typename Map::key_type& key)
    -> decltype(&*map.find(key)->second) {
  const auto found = map.find(key);
  return found == map.end() ? nullptr : &*found->second;
}

std::optional<NumberedObject> objectOf(const NetworkElement& element) {
  return element.number < 0 ? std::nullopt
                            : std::optional(NumberedObject{kManagedElementType, element.number});
}

// Appends `more` to the list. Returns the first new entry.
template <typename Record>
auto spliceTo(std::list<Record>& list, std::list<Record>& more) noexcept {
  const auto first = more.empty() ? list.end() : more.begin();
  list.splice(list.end(), more);
  return first;
}

// Collects the records of a renaming. Records that have the name already are left out.
class RenamingBuilder {
 public:
  explicit RenamingBuilder(const std::string& name) { renaming_.name = name; }

  void add(NamedRecord record, std::string& place) {
    if (place != renaming_.name) {
      renaming_.records.push_back(std::move(record));
      effect_.names.emplace_back(&place, renaming_.name);
    }
  }

  void add(Node& node) {
    NS_DOMAIN::TopoNode_T& record = node.record;
    if (record.nativeName != renaming_.name) {
      renaming_.nodes.push_back(record);
      renaming_.nodes.back().nativeName = renaming_.name;
    }
    add({RecordList::kTopoNodes, record.nodeId}, record.nativeName);
  }

  void add(NetworkElement& element) {
    add({RecordList::kNetworkElements, std::to_string(element.number)}, element.name);
  }

  void add(const NetworkTables::ObjectRecords& object) {
    for (Node* node = object.nodes.first; node != nullptr; node = node->sameObject.next) {
      add(*node);
    }
    if (object.element != nullptr) {
      add(*object.element);
    }
    for (auto* position = object.firstPosition; position != nullptr;
         position = position->nextOfObject) {
      add({RecordList::kClockPositions, position->record.reference}, position->record.label);
    }
  }

  PreparedChange take() { return {std::move(renaming_), std::move(effect_)}; }

 private:
  NetworkRenaming renaming_;
  RenamingEffect effect_;
};

}  // namespace

NetworkTables::NetworkTables(Network network) : NetworkTables(std::move(network), Unlinked()) {
  linkFrom(nodes_.begin(), elements_.begin(), positions_.begin());
}

NetworkTables::NetworkTables(Network network, Unlinked) : ems_(std::move(network.ems)) {
  addNodes(network.topoNodes);
  addElements(network.networkElements);
  addClock(network.clockPositions, network.clockLinks);
  for (ObjectLabel& label : network.objectLabels) {
    labels_.emplace(ObjectKey{label.type, std::move(label.id)}, std::move(label.label));
  }
}

void NetworkTables::addNodes(std::vector<NS_DOMAIN::TopoNode_T>& records) {
  nodesById_.reserve(records.size());
  for (NS_DOMAIN::TopoNode_T& record : records) {
    Node& node = nodes_.emplace_back();
    node.record = std::move(record);
    node.self = std::prev(nodes_.end());
    nodesById_.emplace(node.record.nodeId, &node);
    if (node.record.nodeType == NS_DOMAIN::kTopoElement) {
      node.shownAs = objectOfElementNode(node.record.nodeId);
      addObject(node.shownAs);
    }
  }
}

void NetworkTables::addElements(std::vector<NetworkElement>& records) {
  elementsByNumber_.reserve(records.size());
  for (NetworkElement& record : records) {
    const NetworkElement& element = elements_.emplace_back(std::move(record));
    elementsByNumber_.emplace(element.number, std::prev(elements_.end()));
    addObject(objectOf(element));
  }
}

void NetworkTables::addClock(std::vector<NS_DOMAIN::ClockPositionInfo_T>& positions,
                             std::vector<NS_DOMAIN::ClockTopoLinkInfo_T>& links) {
  positionsByReference_.reserve(positions.size());
  for (NS_DOMAIN::ClockPositionInfo_T& record : positions) {
    Position& position = positions_.emplace_back();
    position.record = std::move(record);
    position.self = std::prev(positions_.end());
    positionsByReference_.emplace(position.record.reference, &position);
    position.shownAs = objectOfClockReference(position.record.reference);
    addObject(position.shownAs);
  }
  linksById_.reserve(links.size());
  for (NS_DOMAIN::ClockTopoLinkInfo_T& record : links) {
    const Link& link = links_.emplace_back(std::move(record));
    linksById_.emplace(link.linkId, std::prev(links_.end()));
  }
}

void NetworkTables::addObject(const std::optional<NumberedObject>& object) {
  if (object) {
    objects_.try_emplace(*object);
  }
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

// --- Adding.

PreparedChange NetworkTables::prepareAddition(Network network) const {
  NetworkAddition addition;
  AdditionEffect effect;
  effect.tables = NetworkTables(network, Unlinked());
  addition.network = std::move(network);
  markShown(addition, effect);
  return {std::move(addition), std::move(effect)};
}

void NetworkTables::markShown(NetworkAddition& addition, AdditionEffect& effect) const {
  salted::Set<std::int32_t> numbers;  // of elements that get a node
  for (const Node& node : effect.tables.nodes_) {
    if (node.shownAs && node.shownAs->type == kManagedElementType &&
        numbers.insert(node.shownAs->number).second) {
      NetworkElement* const known = recordIn(elementsByNumber_, node.shownAs->number);
      if (known != nullptr && !known->shown) {
        addition.shownElements.push_back(known->number);
        effect.marked.push_back(known);
      }
    }
  }
  auto stored = addition.network.networkElements.begin();
  for (NetworkElement& element : effect.tables.elements_) {
    const ObjectRecords* const known = recordsOf({kManagedElementType, element.number});
    const bool hasNode =
        (known != nullptr && known->nodeCount != 0) || numbers.count(element.number) != 0;
    if (hasNode && !element.shown) {
      element.shown = element.shownForNode = true;
      *stored = element;
    }
    ++stored;
  }
}

void NetworkTables::makeRoomFor(const PreparedChange& addition) {
  const NetworkTables& more = std::get<AdditionEffect>(addition.effect).tables;
  makeRoom(nodesById_, more.nodesById_.size());
  makeRoom(elementsByNumber_, more.elementsByNumber_.size());
  makeRoom(positionsByReference_, more.positionsByReference_.size());
  makeRoom(linksById_, more.linksById_.size());
  makeRoom(objects_, more.objects_.size());
}

void NetworkTables::add(AdditionEffect& addition) noexcept {
  absorb(addition.tables);
  for (NetworkElement* const element : addition.marked) {
    element->shown = element->shownForNode = true;
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
  linkFrom(node, element, position);
}

void NetworkTables::linkFrom(std::list<Node>::iterator node,
                             std::list<NetworkElement>::iterator element,
                             std::list<Position>::iterator position) noexcept {
  std::for_each(node, nodes_.end(), [this](Node& each) { link(each); });
  std::for_each(element, elements_.end(), [this](NetworkElement& each) { link(each); });
  std::for_each(position, positions_.end(), [this](Position& each) { link(each); });
}

void NetworkTables::link(Node& node) noexcept {
  node.sequence = ++lastSequence_;
  if (!isRootMarker(node.record.parentId)) {
    node.parent = nodeAt(node.record.parentId);
  }
  if (node.parent != nullptr) {
    append(node.parent->children, &Node::siblings, node);
  }
  if (node.shownAs) {
    node.object = recordsOf(*node.shownAs);
    append(node.object->nodes, &Node::sameObject, node);
    ++node.object->nodeCount;
  }
}

void NetworkTables::link(NetworkElement& element) noexcept {
  if (const auto object = objectOf(element)) {
    recordsOf(*object)->element = &element;
  }
}

void NetworkTables::link(Position& position) noexcept {
  if (position.shownAs) {
    ObjectRecords& object = *recordsOf(*position.shownAs);
    (object.lastPosition == nullptr ? object.firstPosition : object.lastPosition->nextOfObject) =
        &position;
    position.previousOfObject = object.lastPosition;
    object.lastPosition = &position;
  }
}

// --- Removing.

// The node and its descendants, each node after its descendants.
std::vector<NetworkTables::Node*> NetworkTables::subtree(const std::string& nodeId) const {
  std::vector<Node*> reversed;
  std::vector<Node*> open = {nodeAt(nodeId)};
  while (!open.empty()) {
    Node* const node = open.back();
    open.pop_back();
    reversed.push_back(node);
    if (reversed.size() > nodes_.size()) {
      throw std::runtime_error("a node below it is its own ancestor");
    }
    for (Node* child = node->children.first; child != nullptr; child = child->siblings.next) {
      open.push_back(child);
    }
  }
  std::reverse(reversed.begin(), reversed.end());
  return reversed;
}

PreparedChange NetworkTables::prepareRemoval(const std::string& nodeId) const {
  NetworkRemoval removal;
  RemovalEffect effect;
  effect.doomed = subtree(nodeId);
  removal.nodes.reserve(effect.doomed.size());
  std::unordered_map<const ObjectRecords*, std::size_t> lost;
  for (Node* const node : effect.doomed) {
    removal.nodes.push_back(node->record);
    if (node->record.nodeType == NS_DOMAIN::kTopoSubnetwork) {
      removal.objects.push_back({kTopoSubnetworkObjectType, node->record.nodeId});
    } else if (node->object != nullptr && ++lost[node->object] == node->object->nodeCount) {
      removal.objects.push_back(keyOf(*node->shownAs));
      NetworkElement* const element = node->object->element;
      if (element != nullptr && element->shownForNode) {
        removal.hiddenElements.push_back(element->number);
        effect.unmarked.push_back(element);
      }
    }
  }
  effect.labels = labelled(removal.objects);
  return {std::move(removal), std::move(effect)};
}

std::vector<ObjectKey> NetworkTables::labelled(const std::vector<ObjectKey>& objects) const {
  std::vector<ObjectKey> found;
  for (const ObjectKey& object : objects) {
    if (labels_.count(object) != 0) {
      found.push_back(object);
    }
  }
  return found;
}

void NetworkTables::remove(RemovalEffect& removal) noexcept {
  for (Node* const node : removal.doomed) {
    unlink(*node);
    removal.removed.splice(removal.removed.end(), nodes_, node->self);
  }
  for (NetworkElement* const element : removal.unmarked) {
    element->shown = element->shownForNode = false;
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

PreparedChange NetworkTables::prepareElementRemoval(std::int32_t number) const {
  RecordRemoval removal{{RecordList::kNetworkElements, std::to_string(number)}, {}};
  const auto element = elementsByNumber_.find(number)->second;
  if (const auto object = objectOf(*element)) {
    const ObjectRecords& records = *recordsOf(*object);
    if (records.nodeCount == 0 && records.firstPosition == nullptr) {
      removal.objects.push_back(keyOf(*object));
    }
  }
  RecordRemovalEffect effect{element, labelled(removal.objects)};
  return {std::move(removal), std::move(effect)};
}

PreparedChange NetworkTables::preparePositionRemoval(const std::string& reference) const {
  RecordRemoval removal{{RecordList::kClockPositions, reference}, {}};
  const Position& position = *recordIn(positionsByReference_, reference);
  if (position.shownAs) {
    const ObjectRecords& records = *recordsOf(*position.shownAs);
    if (records.nodeCount == 0 && records.element == nullptr &&
        records.firstPosition == records.lastPosition) {
      removal.objects.push_back(keyOf(*position.shownAs));
    }
  }
  RecordRemovalEffect effect{position.self, labelled(removal.objects)};
  return {std::move(removal), std::move(effect)};
}

PreparedChange NetworkTables::prepareLinkRemoval(const std::string& id) const {
  RecordRemoval removal{{RecordList::kClockLinks, id}, {{kClockLinkObjectType, id}}};
  RecordRemovalEffect effect{linksById_.find(id)->second, labelled(removal.objects)};
  return {std::move(removal), std::move(effect)};
}

void NetworkTables::remove(RecordRemovalEffect& removal) noexcept {
  std::visit([this](auto record) { remove(record); }, removal.record);
  for (const ObjectKey& object : removal.labels) {
    labels_.erase(object);
  }
}

void NetworkTables::remove(std::list<NetworkElement>::iterator element) noexcept {
  if (const auto object = objectOf(*element)) {
    recordsOf(*object)->element = nullptr;
    eraseIfEmpty(*object);
  }
  elementsByNumber_.erase(element->number);
  elements_.erase(element);
}

void NetworkTables::remove(std::list<Position>::iterator position) noexcept {
  if (position->shownAs) {
    ObjectRecords& object = *recordsOf(*position->shownAs);
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

// --- Replacing.

// All nodes, each node after its descendants. Nodes below a cycle come last.
std::vector<NetworkTables::Node*> NetworkTables::bottomUp() const {
  std::vector<Node*> reversed;
  std::unordered_set<const Node*> known;
  const auto addWithChildren = [&](Node* root) {
    std::vector<Node*> open = {root};
    while (!open.empty()) {
      Node* const node = open.back();
      open.pop_back();
      if (known.insert(node).second) {
        reversed.push_back(node);
        for (Node* child = node->children.first; child != nullptr; child = child->siblings.next) {
          open.push_back(child);
        }
      }
    }
  };
  for (const bool wantsRoots : {true, false}) {
    for (auto node = nodes_.rbegin(); node != nodes_.rend(); ++node) {
      if (!wantsRoots || node->parent == nullptr) {
        addWithChildren(&*node->self);
      }
    }
  }
  std::reverse(reversed.begin(), reversed.end());
  return reversed;
}

std::vector<ObjectKey> NetworkTables::objectsMissingIn(const NetworkTables& other) const {
  std::vector<ObjectKey> missing;
  const auto addMissing = [&](ObjectKey key) {
    if (!other.hasObject(key)) {
      missing.push_back(std::move(key));
    }
  };
  for (const Node& node : nodes_) {
    if (node.record.nodeType == NS_DOMAIN::kTopoSubnetwork) {
      addMissing({kTopoSubnetworkObjectType, node.record.nodeId});
    }
  }
  for (const auto& [object, records] : objects_) {
    addMissing(keyOf(object));
  }
  for (const Link& link : links_) {
    addMissing({kClockLinkObjectType, link.linkId});
  }
  return missing;
}

PreparedChange NetworkTables::prepareReplacement(Network network) const {
  NetworkReplacement replacement;
  ReplacementEffect effect{NetworkTables(network)};
  NetworkTables& after = effect.tables;
  if (!ems_.empty()) {
    after.ems_ = ems_;
  }
  for (const Node* const node : bottomUp()) {
    const NS_DOMAIN::TopoNode_T* const other = after.node(node->record.nodeId);
    if (other == nullptr || other->nodeType != node->record.nodeType) {
      replacement.deletedNodes.push_back(node->record);
    }
  }
  for (const Node& node : after.nodes_) {
    const NS_DOMAIN::TopoNode_T* const other = this->node(node.record.nodeId);
    if (other == nullptr || other->nodeType != node.record.nodeType) {
      replacement.createdNodes.push_back(node.record);
    } else if (!isSame(*other, node.record)) {
      replacement.changedNodes.push_back(node.record);
    }
  }
  replacement.objects = objectsMissingIn(after);
  replacement.network = std::move(network);
  return {std::move(replacement), std::move(effect)};
}

void NetworkTables::replace(ReplacementEffect& replacement) noexcept {
  std::swap(*this, replacement.tables);
}

// --- Updating.

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

PreparedChange NetworkTables::prepareUpdate(AnyRecord record) const {
  RecordUpdate update{record};
  if (auto* const node = std::get_if<NS_DOMAIN::TopoNode_T>(&record)) {
    return {std::move(update), nodeUpdate(std::move(*node))};
  }
  if (auto* const element = std::get_if<NetworkElement>(&record)) {
    NetworkElement* const place = recordIn(elementsByNumber_, element->number);
    return {std::move(update), ElementUpdate{place, std::move(*element)}};
  }
  if (auto* const position = std::get_if<NS_DOMAIN::ClockPositionInfo_T>(&record)) {
    auto* const place = &recordIn(positionsByReference_, position->reference)->record;
    return {std::move(update), PositionUpdate{place, std::move(*position)}};
  }
  auto& link = std::get<Link>(record);
  Link* const place = recordIn(linksById_, link.linkId);
  return {std::move(update), LinkUpdate{place, std::move(link)}};
}

NodeUpdate NetworkTables::nodeUpdate(NS_DOMAIN::TopoNode_T record) const {
  Node* const node = nodeAt(record.nodeId);
  Node* const parent = isRootMarker(record.parentId) ? nullptr : nodeAt(record.parentId);
  Node* before = parent == nullptr ? nullptr : parent->children.last;
  while (before != nullptr && before->sequence >= node->sequence) {
    before = before->siblings.previous;
  }
  return {node, std::move(record), parent, before};
}

// The ids stay in their places, because the keys of the indexes borrow them.

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
  std::swap(*update.place, update.record);
}

void NetworkTables::update(PositionUpdate& update) noexcept {
  std::swap(*update.place, update.record);
  update.place->reference.swap(update.record.reference);
}

void NetworkTables::update(LinkUpdate& update) noexcept {
  std::swap(*update.place, update.record);
  update.place->linkId.swap(update.record.linkId);
}

// --- Renaming.

PreparedChange NetworkTables::prepareRenaming(const ObjectKey& key, const std::string& name) {
  RenamingBuilder renaming(name);
  if (!hasObject(key)) {
    return renaming.take();
  }
  if (key.type == kTopoSubnetworkObjectType) {
    renaming.add(*nodeAt(key.id));
  } else if (key.type == kClockLinkObjectType) {
    Link& link = *recordIn(linksById_, key.id);
    renaming.add({RecordList::kClockLinks, link.linkId}, link.nativeName);
  } else {
    renaming.add(*recordsOf(*numberedObject(key)));
  }
  return renaming.take();
}

PreparedChange NetworkTables::prepareNodeRenaming(const std::string& nodeId,
                                                  const std::string& name) {
  RenamingBuilder renaming(name);
  Node& node = *nodeAt(nodeId);
  if (node.object != nullptr) {
    renaming.add(*node.object);
  } else {
    renaming.add(node);
  }
  return renaming.take();
}

PreparedChange NetworkTables::prepareElementRenaming(std::int32_t number, const std::string& name) {
  RenamingBuilder renaming(name);
  NetworkElement& element = *recordIn(elementsByNumber_, number);
  if (const auto object = objectOf(element)) {
    renaming.add(*recordsOf(*object));
  } else {
    renaming.add(element);
  }
  return renaming.take();
}

void NetworkTables::rename(RenamingEffect& renaming) noexcept {
  for (auto& [place, name] : renaming.names) {
    place->swap(name);
  }
}

// --- Labels, and all changes.

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
