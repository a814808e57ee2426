// The functions of NetworkTables that prepare changes: they may fail, and change no record.

#include <algorithm>
#include <stdexcept>
#include <unordered_map>
#include <unordered_set>

#include "agent/model/NetworkTables.h"
#include "agent/model/PreparedChange.h"
#include "agent/model/RecordLookup.h"

namespace agent {
namespace {

using Node = NetworkTables::Node;

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
      Element* const known = recordIn(elementsByNumber_, node.shownAs->number);
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
  elementIndex_.makeRoom(more.elements_.size());
  makeRoom(positionsByReference_, more.positionsByReference_.size());
  makeRoom(linksById_, more.linksById_.size());
  makeRoom(objects_, more.objects_.size());
}

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
      Element* const element = node->object->element;
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

PreparedChange NetworkTables::prepareUpdate(AnyRecord record) const {
  RecordUpdate update{record};
  if (auto* const node = std::get_if<NS_DOMAIN::TopoNode_T>(&record)) {
    return {std::move(update), nodeUpdate(std::move(*node))};
  }
  if (auto* const element = std::get_if<NetworkElement>(&record)) {
    Element* const place = recordIn(elementsByNumber_, element->number);
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

}  // namespace agent
