// Changes of a network as plain values. A store commits a change, the model then applies the
// change, and the event of the change reports the affected nodes.

#ifndef AGENT_NETWORK_NETWORKCHANGE_H
#define AGENT_NETWORK_NETWORKCHANGE_H

#include <cstdint>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "agent/network/ManagedObjects.h"
#include "agent/network/Network.h"

namespace agent {

// Appends the lists of a network to the lists of the stored network, and marks stored elements as
// shown for a node. The name of the managing system is used only if the store has no such name.
struct NetworkAddition {
  Network network;
  std::vector<std::int32_t> shownElements;  // stored elements to mark
};

// Removes nodes, the stored attributes of objects, and marks of elements. Unknown nodes, objects
// and elements are ignored.
struct NetworkRemoval {
  std::vector<NS_DOMAIN::TopoNode_T> nodes;  // each node after its descendants
  std::vector<ObjectKey> objects;            // objects that lose their attributes
  std::vector<std::int32_t> hiddenElements;  // elements that lose their mark
};

// Gives records a new name.
struct NetworkRenaming {
  std::vector<NamedRecord> records;
  std::string name;
  std::vector<NS_DOMAIN::TopoNode_T> nodes;  // the nodes among the records, with the new name
};

// Replaces all lists of the stored network. With objectAttributes, no other object keeps an owner
// or additional information. The name of the managing system is used only if the store has no such
// name.
struct NetworkReplacement {
  Network network;
  std::vector<ObjectKey> objects;  // objects without a record, which lose their attributes

  // The difference between the topology nodes. A node that changes its type between element and
  // subnetwork is deleted and created.
  std::vector<NS_DOMAIN::TopoNode_T> deletedNodes;  // each node after its descendants
  std::vector<NS_DOMAIN::TopoNode_T> createdNodes;
  std::vector<NS_DOMAIN::TopoNode_T> changedNodes;
};

// Removes one record that is no topology node. A record that is not stored is ignored.
struct RecordRemoval {
  NamedRecord record;
  std::vector<ObjectKey> objects;  // objects that lose their attributes
};

// Replaces the stored record that has the id of this record. The record keeps its place in the
// list.
struct RecordUpdate {
  AnyRecord record;
};

// --- Attributes of an object. The object need not exist.

// An empty label removes the label.
struct LabelChange {
  ObjectKey key;
  std::string label;
};

// An empty owner removes the owner.
struct OwnerChange {
  ObjectKey key;
  std::string owner;
};

// Merges pairs into the additional information, as mergedInfo(). REQUIRES: every name once.
struct InfoChange {
  ObjectKey key;
  InfoPairs pairs;
};

// Removes label, owner and additional information.
struct AttributeRemoval {
  ObjectKey key;
};

using NetworkChange = std::variant<NetworkAddition, NetworkRemoval, NetworkReplacement,
                                   NetworkRenaming, RecordRemoval, RecordUpdate, LabelChange,
                                   OwnerChange, InfoChange, AttributeRemoval>;

// The additional information after a merge. An empty value removes the pair of its name, another
// value replaces the stored value in place, and a new name is appended. REQUIRES: every name once
// in each of the lists.
InfoPairs mergedInfo(const InfoPairs& stored, const InfoPairs& changes);

}  // namespace agent

#endif
