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
#include "agent/network/NetworkChange.h"
#include "hash/SaltedHash.h"

namespace agent {

struct PreparedChange;
struct AdditionEffect;
struct RemovalEffect;
struct RenamingEffect;
struct LabelEffect;

struct KeyOrder {
  bool operator()(const ObjectKey& a, const ObjectKey& b) const {
    return std::tie(a.type, a.id) < std::tie(b.type, b.id);
  }
};
using Labels = std::map<ObjectKey, std::string, KeyOrder>;

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

  // --- Preparing changes. Fails only for lack of memory unless a function says otherwise.

  // Marks elements as shown that have nodes afterwards: elements of the network and elements that
  // are in the tables. REQUIRES: the tables have no object of the network.
  PreparedChange prepareAddition(Network network) const;

  // The second half of that preparation: moves entries of the indexes.
  void makeRoomFor(const PreparedChange& addition);

  // REQUIRES: the node exists. Throws std::runtime_error for a node that is its own ancestor, which
  // only a manipulated store can contain.
  PreparedChange prepareRemoval(const std::string& nodeId) const;

  // Renames every record of an object, or a node and every record of the element that the node
  // shows. The change has no records if all have the name already.
  PreparedChange prepareRenaming(const ObjectKey& key, const std::string& name);
  PreparedChange prepareNodeRenaming(const std::string& nodeId, const std::string& name);

  // --- Applying prepared changes.

  void apply(PreparedChange& change) noexcept;

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
  void add(AdditionEffect& addition) noexcept;
  void remove(RemovalEffect& removal) noexcept;
  static void rename(RenamingEffect& renaming) noexcept;
  void setLabel(LabelEffect& change) noexcept;
  std::vector<Node*> subtree(const std::string& nodeId) const;
  void markShown(NetworkAddition& addition, AdditionEffect& effect) const;

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

}  // namespace agent

#endif
