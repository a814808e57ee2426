// The records of the network, with indexes to find records and links between records. Part of the
// model.
//
// A change has two steps. prepare...() does all work that can fail and changes no record
// (PrepareChange.cpp). apply() neither allocates nor throws (ApplyChange.cpp). A prepared change is
// valid until another change is applied.
//
// Adding a record and removing a node take constant time on average, independent of the size of the
// network.

#ifndef AGENT_MODEL_NETWORKTABLES_H
#define AGENT_MODEL_NETWORKTABLES_H

#include <cstddef>
#include <cstdint>
#include <list>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "agent/model/ElementIndex.h"
#include "agent/network/ManagedObjects.h"
#include "agent/network/Network.h"
#include "agent/network/NetworkChange.h"
#include "agent/network/NetworkSource.h"
#include "hash/SaltedHash.h"

namespace agent {

struct PreparedChange;
struct AdditionEffect;
struct RemovalEffect;
struct ReplacementEffect;
struct RenamingEffect;
struct RecordRemovalEffect;
struct NodeUpdate;
struct ElementUpdate;
struct PositionUpdate;
struct LinkUpdate;
struct LabelEffect;

// The records that clients see under the name of an object, and its label.
struct ObjectView {
  std::vector<NS_DOMAIN::TopoNode_T> nodes;
  std::optional<NetworkElement> element;
  std::vector<NS_DOMAIN::ClockPositionInfo_T> positions;
  std::optional<NS_DOMAIN::ClockTopoLinkInfo_T> link;
  std::string label;
};

struct KeyOrder {
  bool operator()(const ObjectKey& a, const ObjectKey& b) const {
    return std::tie(a.type, a.id) < std::tie(b.type, b.id);
  }
};
using Labels = std::map<ObjectKey, std::string, KeyOrder>;

// Nodes are members of two linked lists: the children of the parent, and the nodes of the object.
// The links are part of the node, so that apply() needs no memory and a removal no search
// (docs/adr/0006-linked-lists-in-the-model.md).
//
// Thread-safety: none; NetworkModel locks. Ownership: owns all records. Indexes and links point to
// the records, whose addresses never change. Errors: std::bad_alloc, and as the functions say.
class NetworkTables {
 public:
  using Link = NS_DOMAIN::ClockTopoLinkInfo_T;

  struct ObjectRecords;
  struct Node;

  // A node's place in a linked list.
  struct Neighbours {
    Node* previous = nullptr;
    Node* next = nullptr;
  };

  // A linked list of nodes, in the order of nodes().
  struct Chain {
    Node* first = nullptr;
    Node* last = nullptr;
  };

  struct Node {
    NS_DOMAIN::TopoNode_T record;
    std::optional<NumberedObject> shownAs;  // the element; nothing without a valid number
    std::list<Node>::iterator self{};       // in nodes()
    std::uint64_t sequence = 0;             // rises along nodes()

    Node* parent = nullptr;  // null for a root and for an unknown parent
    Chain children;
    Neighbours siblings;              // in parent->children
    ObjectRecords* object = nullptr;  // null without shownAs
    Neighbours sameObject;            // in object->nodes
  };

  struct Position {
    NS_DOMAIN::ClockPositionInfo_T record;
    std::optional<NumberedObject> shownAs;
    std::list<Position>::iterator self{};
    ObjectRecords* object = nullptr;  // null without shownAs
    Position* previousOfObject = nullptr;
    Position* nextOfObject = nullptr;
  };

  // A network element, with its place in elementIndex().
  struct Element : NetworkElement {
    ElementIndex::Place place = 0;
  };

  // All records of one element: clients see the records under the same name.
  struct ObjectRecords {
    Chain nodes;
    std::size_t nodeCount = 0;
    Element* element = nullptr;
    Position* firstPosition = nullptr;
    Position* lastPosition = nullptr;

    bool isEmpty() const {
      return nodeCount == 0 && element == nullptr && firstPosition == nullptr;
    }
  };

  NetworkTables() = default;
  explicit NetworkTables(Network network);
  explicit NetworkTables(NetworkSource& source);
  NetworkTables(const NetworkTables&) = delete;
  NetworkTables& operator=(const NetworkTables&) = delete;
  NetworkTables(NetworkTables&&) = default;
  NetworkTables& operator=(NetworkTables&&) = default;

  const std::string& ems() const { return ems_; }
  const std::list<Node>& nodes() const { return nodes_; }
  const std::list<Element>& elements() const { return elements_; }
  const ElementIndex& elementIndex() const { return elementIndex_; }
  const std::list<Position>& positions() const { return positions_; }
  const std::list<Link>& links() const { return links_; }

  // Return null when there is no such object. The pointers are valid until a change is applied.
  const NS_DOMAIN::TopoNode_T* node(std::string_view id) const;
  const NS_DOMAIN::TopoNode_T* nodeShownAs(const NumberedObject& object) const;
  const NetworkElement* element(std::int32_t number) const;
  const std::string* label(const ObjectKey& key) const;

  const NS_DOMAIN::ClockPositionInfo_T* clockPosition(std::string_view reference) const;
  const Link* clockLink(std::string_view id) const;
  bool hasObject(const ObjectKey& key) const;
  std::optional<ObjectView> object(const ObjectKey& key) const;

  // Whether a node is another node or below it. REQUIRES: both exist. Throws std::runtime_error for
  // a node that is its own ancestor, which only a manipulated store can contain.
  bool isWithin(const std::string& nodeId, const std::string& ancestorId) const;

  // --- Preparing changes. All functions throw std::bad_alloc.

  // The change also marks each element that gets a node as shown, whether the element is new or
  // present. REQUIRES: the tables have no object of the network.
  PreparedChange prepareAddition(Network network) const;

  // Second step of the preparation: reserves memory in the indexes. May move entries, so readers
  // must be locked out.
  void makeRoomFor(const PreparedChange& addition);

  // REQUIRES: the node exists. Throws std::runtime_error for a node that is its own ancestor, which
  // only a manipulated store can contain.
  PreparedChange prepareRemoval(const std::string& nodeId) const;

  // Renames every record of an object, or a node and every record of the element that the node
  // shows. The change leaves out records that have the name already.
  PreparedChange prepareRenaming(const ObjectKey& key, const std::string& name);
  PreparedChange prepareNodeRenaming(const std::string& nodeId, const std::string& name);

  // Replaces all lists. Keeps the name of the managing system if the tables have one. Elements are
  // marked as shown exactly as in the network. REQUIRES: the network passes checkNetwork().
  PreparedChange prepareReplacement(Network network) const;

  // Renames an element and every record that clients see under its name. REQUIRES: the element
  // exists.
  PreparedChange prepareElementRenaming(std::int32_t number, const std::string& name);

  // Removes one record. With the last record of an object, also removes the label, the owner and
  // the additional information of the object. REQUIRES: the record exists.
  PreparedChange prepareElementRemoval(std::int32_t number) const;
  PreparedChange preparePositionRemoval(const std::string& reference) const;
  PreparedChange prepareLinkRemoval(const std::string& id) const;

  // Replaces the record that has the id of the given record. REQUIRES: the record exists; a node
  // keeps its type, its parent exists or is a root marker, and the parent is not below the node.
  PreparedChange prepareUpdate(AnyRecord record) const;

  // --- Applying prepared changes.

  void apply(PreparedChange& change) noexcept;

 private:
  // Makes tables with indexes, for an addition. The nodes and positions refer to their objects but
  // are members of no linked list.
  struct Unlinked {};
  NetworkTables(Network network, Unlinked);

  void reserve(const NetworkSizes& sizes);
  void add(Network& piece, std::list<Node>::iterator& nextNode);
  void addNodes(std::vector<NS_DOMAIN::TopoNode_T>& records);
  void addElements(std::vector<NetworkElement>& records, std::list<Node>::iterator& nextNode);
  void addClock(std::vector<NS_DOMAIN::ClockPositionInfo_T>& positions,
                std::vector<NS_DOMAIN::ClockTopoLinkInfo_T>& links);
  ObjectRecords* addObject(const std::optional<NumberedObject>& object);
  ObjectRecords* addObject(const std::optional<NumberedObject>& object,
                           std::list<Node>::iterator& next);
  Node* nodeAt(std::string_view id) const;
  const ObjectRecords* recordsOf(const NumberedObject& object) const;
  ObjectRecords* recordsOf(const NumberedObject& object);
  void absorb(NetworkTables& more) noexcept;
  void findObjectsFrom(std::list<Node>::iterator node, std::list<Element>::iterator element,
                       std::list<Position>::iterator position) noexcept;
  void linkFrom(std::list<Node>::iterator node, std::list<Position>::iterator position) noexcept;
  Node* parentOf(const Node& node) const noexcept;
  void link(Node& node) noexcept;
  static void link(Position& position) noexcept;
  void unlink(Node& node) noexcept;
  void eraseIfEmpty(const NumberedObject& object) noexcept;
  void indexFrom(std::list<Element>::iterator element) noexcept;
  void add(AdditionEffect& addition) noexcept;
  void remove(RemovalEffect& removal) noexcept;
  void remove(RecordRemovalEffect& removal) noexcept;
  void replace(ReplacementEffect& replacement) noexcept;
  void remove(std::list<Element>::iterator element) noexcept;
  void remove(std::list<Position>::iterator position) noexcept;
  void remove(std::list<Link>::iterator link) noexcept;
  static void rename(RenamingEffect& renaming) noexcept;
  static void update(NodeUpdate& update) noexcept;
  void update(ElementUpdate& update) noexcept;
  static void update(PositionUpdate& update) noexcept;
  static void update(LinkUpdate& update) noexcept;
  void setLabel(LabelEffect& change) noexcept;
  std::vector<Node*> subtree(const std::string& nodeId) const;
  std::vector<Node*> bottomUp() const;
  std::vector<ObjectKey> objectsMissingIn(const NetworkTables& other) const;
  std::vector<ObjectKey> labelled(const std::vector<ObjectKey>& objects) const;
  NodeUpdate nodeUpdate(NS_DOMAIN::TopoNode_T record) const;
  void markShown(NetworkAddition& addition, AdditionEffect& effect) const;

  std::string ems_;
  std::list<Node> nodes_;
  std::list<Element> elements_;
  std::list<Position> positions_;
  std::list<Link> links_;
  std::uint64_t lastSequence_ = 0;
  Labels labels_;

  ElementIndex elementIndex_;  // one entry for each element, in the order of elements_

  // The indexes. The keys point to texts of the records.
  salted::Map<std::string_view, Node*> nodesById_;
  salted::Map<std::int32_t, std::list<Element>::iterator> elementsByNumber_;
  salted::Map<std::string_view, Position*> positionsByReference_;
  salted::Map<std::string_view, std::list<Link>::iterator> linksById_;
  salted::Map<NumberedObject, ObjectRecords, NumberedObjectHash> objects_;
};

}  // namespace agent

#endif
