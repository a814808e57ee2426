// Which nodes lie below one subnetwork.

#ifndef TOPOMANAGEMENTMGR_PARENTCHAINS_H
#define TOPOMANAGEMENTMGR_PARENTCHAINS_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "hash/SaltedHash.h"
#include "platform/domain/DomainRecords.h"

namespace topo {

// Walks up from parent to parent and remembers what it found, so that all questions about one
// subnetwork together take time linear in the number of nodes.
//
// Borrows the nodes and the id. Thread-safety: none.
class ParentChains {
 public:
  ParentChains(const std::string& subnetworkId, const std::vector<NS_DOMAIN::TopoNode_T>& nodes);
  ParentChains(std::string&& subnetworkId,
               const std::vector<NS_DOMAIN::TopoNode_T>& nodes) = delete;  // would not outlive this

  // Whether a node with this parent lies below the subnetwork.
  bool leadToSubnetwork(const std::string& parentId);

 private:
  enum class Answer : char { kUnknown, kWalking, kBelow, kNotBelow };

  // What the end of a walk says: kUnknown when the node at the index has to be asked further.
  Answer answerAt(const std::string& id, std::size_t& index) const;

  const std::string& subnetworkId_;
  const std::vector<NS_DOMAIN::TopoNode_T>& nodes_;
  salted::Map<std::string_view, std::size_t> first_;  // id, index of the first node that has it
  std::vector<Answer> answers_;                       // of the node at the same index
};

}  // namespace topo

#endif
