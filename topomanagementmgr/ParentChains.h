// Finds the nodes below a subnetwork.

#ifndef TOPOMANAGEMENTMGR_PARENTCHAINS_H
#define TOPOMANAGEMENTMGR_PARENTCHAINS_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "hash/SaltedHash.h"
#include "platform/domain/DomainRecords.h"

namespace topo {

// Follows the chain of parents of a node, and caches the answer of every node on the chain. So the
// time for all nodes of a network is linear in the number of nodes.
//
// Thread-safety: none. Ownership: borrows the nodes and the id, which must outlive the object.
// Errors: every function may throw std::bad_alloc; the constructor also throws std::system_error
// (see salted::Hash).
class ParentChains {
 public:
  ParentChains(const std::string& subnetworkId, const std::vector<NS_DOMAIN::TopoNode_T>& nodes);
  ParentChains(std::string&& subnetworkId,
               const std::vector<NS_DOMAIN::TopoNode_T>& nodes) = delete;  // the id is borrowed

  // Whether a node with this parent is below the subnetwork. A parent that is not among the nodes,
  // a root marker and a cycle end the chain. When nodes have the same id, the first node counts.
  bool leadToSubnetwork(const std::string& parentId);

 private:
  enum class Answer : char { kUnknown, kWalking, kBelow, kNotBelow };

  // The answer for a node with this id. kUnknown: the walk continues at the node at `index`.
  Answer answerAt(const std::string& id, std::size_t& index) const;

  const std::string& subnetworkId_;
  const std::vector<NS_DOMAIN::TopoNode_T>& nodes_;
  salted::Map<std::string_view, std::size_t> first_;  // node id -> index of the first such node
  std::vector<Answer> answers_;                       // indexed as nodes_
};

}  // namespace topo

#endif
