// Changes of the managed network while it is served: nodes come, go and get other names, and whole
// networks are added.

#ifndef AGENT_CHANGES_NODESERVICE_H
#define AGENT_CHANGES_NODESERVICE_H

#include <cstddef>
#include <string>
#include <string_view>

#include "agent/base/Cancellation.h"
#include "agent/base/OperationResult.h"
#include "agent/changes/NetworkWriter.h"
#include "agent/network/Network.h"

namespace agent {

// How many objects of each kind an import has added.
struct ImportSummary {
  std::size_t topoNodes = 0;
  std::size_t networkElements = 0;
  std::size_t clockPositions = 0;
  std::size_t clockLinks = 0;
  std::size_t objectLabels = 0;
};

// A change that succeeded is in the store and in the model, and its event is raised; any other has
// changed nothing. What can be is what can stand in a network file (docs/formats.md), with texts of
// at most AttributeService::kMostTextBytes.
//
// An element of the element list that gets a topology node is from then on marked as shown, so that
// the topology does not show it twice. The mark ends with the last such node; one that a network
// file has set stays.
//
// Codes: kInvalidName for input that nothing can be made of, kEntityNotFound for an id or a parent
// that is not there, kAlreadyExists for what is there already, kInternalError for store and memory.
//
// Borrows the writer and the cancellation, which must outlive it. Thread-safety: any thread.
class NodeService {
 public:
  // cancellation ends an import that is under way, which then has changed nothing.
  explicit NodeService(NetworkWriter& writer,
                       const Cancellation& cancellation = Cancellation::none())
      : writer_(writer), cancellation_(cancellation) {}

  const Cancellation& cancellation() const { return cancellation_; }

  // Adds a node at the end of the list; an element (type 1) or a subnetwork (type 2). Fields that
  // are carried only are not kept. Raises EVENT_TOPO_NODE_CREATED.
  Outcome create(const NS_DOMAIN::TopoNode_T& node);

  // Removes a node with everything below it, and says how many nodes that were. Raises
  // EVENT_TOPO_NODE_DELETED with each node after everything below it, siblings in the list's order.
  // What is stored about a node's object (label, owner, additional information) goes with the last
  // of the object's nodes.
  Outcome remove(const std::string& id, std::size_t& removed);

  // Gives a node another name, and so everything else that shows the same element. Raises
  // EVENT_TOPO_NODE_CHANGED with every topology node whose name was another; nothing when there is
  // none.
  Outcome rename(const std::string& id, std::string_view name);

  // Adds a network, all of it or nothing, with its lists after those that are there. Parents may be
  // nodes of either. The name of its managing system counts only where there was none before, and
  // only from the next start. Raises EVENT_TOPO_NODE_CREATED with all its nodes, in their order.
  Outcome import(Network network, ImportSummary& summary);

 private:
  NetworkWriter& writer_;
  const Cancellation& cancellation_;
};

}  // namespace agent

#endif
