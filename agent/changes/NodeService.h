// Changes of the served network: creates, removes and renames nodes, and imports whole networks.

#ifndef AGENT_CHANGES_NODESERVICE_H
#define AGENT_CHANGES_NODESERVICE_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "agent/base/Cancellation.h"
#include "agent/base/OperationResult.h"
#include "agent/changes/NetworkWriter.h"
#include "agent/network/Network.h"
#include "agent/network/NetworkPlaces.h"

namespace agent {

// The number of added objects of each kind.
struct ImportSummary {
  std::size_t topoNodes = 0;
  std::size_t networkElements = 0;
  std::size_t clockPositions = 0;
  std::size_t clockLinks = 0;
  std::size_t objectLabels = 0;
};

struct ImportOptions {
  bool replace = false;  // the network replaces the served network
  bool dryRun = false;   // checks and counts, and changes nothing
  NetworkPlaces places;  // for failures
};

// The fields that a change of a node replaces. A field without a value stays unchanged.
struct NodeFields {
  std::optional<std::pair<std::int32_t, std::int32_t>> params;
  std::optional<std::vector<std::pair<std::string, std::string>>> attributes;
};

// After a success the change is in the store and in the model, and its event is raised; a failure
// changes nothing. A network can contain the same values as a network file (docs/formats.md), with
// texts of at most kMostTextBytes.
//
// An element of the element list that gets a topology node is marked as shown, so that the topology
// does not show the element twice. The mark ends with the last such node. A mark from a network
// file never ends.
//
// Two nodes must not have the same name for clients, as the nodes NE=7 and 7 have: the second node
// is refused with kAlreadyExists. A store that already contains such nodes is served.
//
// Thread-safety: any thread. Ownership: borrows the writer and the cancellation, which outlive the
// service. Errors: kInvalidName for malformed input, kEntityNotFound for an unknown id or parent,
// kAlreadyExists for a record that exists, kInternalError for store and memory.
class NodeService {
 public:
  // cancellation ends an import in progress, which then changes nothing.
  explicit NodeService(NetworkWriter& writer,
                       const Cancellation& cancellation = Cancellation::none())
      : writer_(writer), cancellation_(cancellation) {}

  const Cancellation& cancellation() const { return cancellation_; }

  // The parentType that means the type of the parent node; for a node without a parent, a
  // subnetwork.
  static constexpr std::uint32_t kTypeOfParent = 0;

  // Appends an element (type 1) or a subnetwork (type 2) to the list of nodes. Ignores the fields
  // that are not stored (Network.h). Fails with kInvalidName when the parent is an element or a
  // subnetwork and parentType is another type. Raises EVENT_TOPO_NODE_CREATED.
  Outcome create(const NS_DOMAIN::TopoNode_T& node);

  // Removes a node with its descendants; removed is the number of removed nodes. Raises
  // EVENT_TOPO_NODE_DELETED with each node after its descendants, siblings in the order of the
  // list. The last node of an object takes the stored attributes of the object with it.
  Outcome remove(const std::string& id, std::size_t& removed);

  // Renames a node, and every other record of the element that the node shows. Raises
  // EVENT_TOPO_NODE_CHANGED with the topology nodes that get a different name; raises no event
  // without such nodes.
  Outcome rename(const std::string& id, std::string_view name);

  // Gives a node another parent. A root marker makes the node a root. Fails with kInvalidName when
  // the parent is the node itself or a descendant, and for a parentType as create() does. The node
  // keeps its place in the list of nodes. Raises EVENT_TOPO_NODE_CHANGED with the node, unless the
  // parent is the same.
  Outcome move(const std::string& id, const std::string& parentId, std::uint32_t parentType);

  // Replaces fields of a node. Raises EVENT_TOPO_NODE_CHANGED with the node, unless the fields are
  // the same.
  Outcome change(const std::string& id, const NodeFields& fields);

  // Appends the lists of a network to the lists of the served network, as a whole or not at all.
  // Parents may be nodes of both networks. The name of the managing system is stored only if the
  // store has no such name, and is used from the next start. Raises EVENT_TOPO_NODE_CREATED with
  // all added nodes, in their order.
  //
  // With options.replace the network replaces the served network instead: it has the order and the
  // marks of a first load. Owner and additional information are removed for objects that the
  // network does not contain. The labels are those of the network. Raises EVENT_TOPO_NODE_DELETED,
  // _CREATED and _CHANGED, in this order, with the nodes that differ.
  Outcome import(Network network, ImportSummary& summary, const ImportOptions& options = {});

 private:
  NetworkWriter& writer_;
  const Cancellation& cancellation_;
};

}  // namespace agent

#endif
