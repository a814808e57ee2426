// The network as the model keeps it: its lists, and what makes their objects quick to find and to
// change. Part of the model.
//
// Changes are made in two steps. What may fail is prepared beforehand, with nothing to be seen of
// it; what then makes the change neither allocates nor throws. A prepared change is good until
// another one is made.
//
// A new record costs a constant time on average, a removed node the same, each whatever the size of
// the network is.

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

#include "agent/network/ManagedObjects.h"
#include "agent/network/Network.h"
#include "hash/SaltedHash.h"

namespace agent {

struct NetworkAddition;
struct NetworkRemoval;

// A change of names: of those records that had another one.
struct NetworkRenaming {
  std::vector<NamedRecord> records;
  std::vector<NS_DOMAIN::TopoNode_T> nodes;  // those among them that are nodes, as they will be

  std::vector<std::pair<std::string*, std::string>> names;  // where, and what is put there
};

struct KeyOrder {
  bool operator()(const ObjectKey& a, const ObjectKey& b) const {
    return std::tie(a.type, a.id) < std::tie(b.type, b.id);
  }
};
using Labels = std::map<ObjectKey, std::string, KeyOrder>;

// A label that an object gets; none when it loses the one it has.
struct LabelChange {
  ObjectKey key;
  Labels label;
};

// Thread-safety: none of its own.
class NetworkTables {
 public:
  struct ObjectRecords;
  struct Node;

  struct Neighbours {
    Node* previous = nullptr;
    Node* next = nullptr;
  };

  struct Chain {
    Node* first = nullptr;
    Node* last = nullptr;
  };

  struct Node {
    NS_DOMAIN::TopoNode_T record;
    std::optional<NumberedObject> shownAs;  // for an element that can be shown
    std::list<Node>::iterator self{};

    // All of these in the order of the list.
    Node* parent = nullptr;
    Chain children;
    Neighbours siblings;    // in the children of the parent
    Neighbours sameObject;  // in the nodes of the object
    ObjectRecords* object = nullptr;
  };

  struct Position {
    NS_DOMAIN::ClockPositionInfo_T record;
    std::optional<NumberedObject> shownAs;
    Position* nextOfObject = nullptr;
  };

  // All records that clients see under the name of one element.
  struct ObjectRecords {
    Chain nodes;
    std::size_t nodeCount = 0;
    NetworkElement* element = nullptr;
    Position* firstPosition = nullptr;
    Position* lastPosition = nullptr;

    bool isEmpty() const {
      return nodeCount == 0 && element == nullptr && firstPosition == nullptr;
    }
  };

  NetworkTables() = default;
  explicit NetworkTables(Network network);
  NetworkTables(const NetworkTables&) = delete;
  NetworkTables& operator=(const NetworkTables&) = delete;
  NetworkTables(NetworkTables&&) = default;
  NetworkTables& operator=(NetworkTables&&) = default;

  const std::string& ems() const { return ems_; }
  const std::list<Node>& nodes() const { return nodes_; }
  const std::list<NetworkElement>& elements() const { return elements_; }
  const std::list<Position>& positions() const { return positions_; }
  const std::list<NS_DOMAIN::ClockTopoLinkInfo_T>& links() const { return links_; }

  // Null for what is not there.
  const NS_DOMAIN::TopoNode_T* node(std::string_view id) const;
  const NetworkElement* element(std::int32_t number) const;
  const std::string* label(const ObjectKey& key) const;

  bool hasPosition(std::string_view reference) const;
  bool hasLink(std::string_view id) const;
  bool hasObject(const ObjectKey& key) const;

  // --- Preparing changes. Nothing but memory can fail unless it says otherwise.

  // Marks elements as shown that have nodes then: those of the network, and those that are there.
  // REQUIRES: nothing of the network is there already.
  NetworkAddition prepareAddition(Network network) const;

  // The second half of that preparation: moves entries of the indexes.
  void makeRoomFor(const NetworkAddition& addition);

  // REQUIRES: the node is there. Throws std::runtime_error for one that is its own ancestor, as
  // only a store can have it that somebody else has changed.
  NetworkRemoval prepareRemoval(const std::string& nodeId) const;

  // Of every record of an object, or of a node and every record of the element that it is.
  NetworkRenaming prepareRenaming(const ObjectKey& key, const std::string& name);
  NetworkRenaming prepareNodeRenaming(const std::string& nodeId, const std::string& name);

  // --- Making them.

  void add(NetworkAddition& addition) noexcept;
  void remove(NetworkRemoval& removal) noexcept;
  void rename(NetworkRenaming& renaming) noexcept;
  void setLabel(LabelChange& change) noexcept;

 private:
  struct NumberedHash {
    std::size_t operator()(const NumberedObject& object) const {
      return salted::Hash()(std::int64_t{object.number} * 4 + object.type);
    }
  };

  // Records with all that is needed to find them, but without what ties them to each other.
  struct Loose {};
  NetworkTables(Network network, Loose);

  void addNodes(std::vector<NS_DOMAIN::TopoNode_T>& records);
  void addElements(std::vector<NetworkElement>& records);
  void addClock(std::vector<NS_DOMAIN::ClockPositionInfo_T>& positions,
                std::vector<NS_DOMAIN::ClockTopoLinkInfo_T>& links);
  void knowObject(const std::optional<NumberedObject>& object);
  Node* nodeAt(std::string_view id) const;
  const ObjectRecords* recordsOf(const NumberedObject& object) const;
  ObjectRecords* recordsOf(const NumberedObject& object);
  void absorb(NetworkTables& more) noexcept;
  void tieFrom(std::list<Node>::iterator node, std::list<NetworkElement>::iterator element,
               std::list<Position>::iterator position) noexcept;
  void tie(Node& node) noexcept;
  void tie(Position& position) noexcept;
  void tie(NetworkElement& element) noexcept;
  void untie(Node& node) noexcept;
  void addTo(NetworkRenaming& renaming, Node& node, const std::string& name) const;
  void addTo(NetworkRenaming& renaming, const ObjectRecords& object, const std::string& name) const;
  std::vector<Node*> subtree(const std::string& nodeId) const;
  void markShown(NetworkAddition& addition) const;

  std::string ems_;
  std::list<Node> nodes_;
  std::list<NetworkElement> elements_;
  std::list<Position> positions_;
  std::list<NS_DOMAIN::ClockTopoLinkInfo_T> links_;
  Labels labels_;

  // The texts are borrowed from the records.
  salted::Map<std::string_view, Node*> nodesById_;
  salted::Map<std::int32_t, NetworkElement*> elementsByNumber_;
  salted::Map<std::string_view, Position*> positionsByReference_;
  salted::Map<std::string_view, NS_DOMAIN::ClockTopoLinkInfo_T*> linksById_;
  salted::Map<NumberedObject, ObjectRecords, NumberedHash> objects_;
};

// A network that is added to another.
struct NetworkAddition {
  Network network;                          // with its new marks
  std::vector<std::int32_t> shownElements;  // those that are there already and get a mark

  NetworkTables tables;
  std::vector<NetworkElement*> marked;
};

// A node that goes, with everything below it.
struct NetworkRemoval {
  std::vector<NS_DOMAIN::TopoNode_T> nodes;  // each after everything below it
  std::vector<ObjectKey> objects;            // those that lose their last node
  std::vector<std::int32_t> hiddenElements;  // those that lose their mark

  std::vector<NetworkTables::Node*> doomed;
  std::vector<NetworkElement*> unmarked;
  std::list<NetworkTables::Node> removed;  // what is left to be freed
};

}  // namespace agent

#endif
