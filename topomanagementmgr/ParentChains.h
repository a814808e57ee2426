// Finds the nodes below a subnetwork.

#ifndef TOPOMANAGEMENTMGR_PARENTCHAINS_H
#define TOPOMANAGEMENTMGR_PARENTCHAINS_H

#include <bitset>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/domain/DomainRecords.h"
#include "topomanagementmgr/TextIndex.h"

namespace topo {

// Follows the chain of every parent once, and stores the answer for every parent on the chain. So
// the time for all nodes of a network is linear in the number of nodes.
//
// Thread-safety: constant after construction. Ownership: borrows the nodes and the id, which must
// outlive the object and stay unchanged. Errors: the constructor throws std::bad_alloc, and every
// function but isBelow() std::system_error (see salted::Hash).
class ParentChains {
 public:
  ParentChains(const std::string& subnetworkId, const std::vector<NS_DOMAIN::TopoNode_T>& nodes);
  ParentChains(std::string&& subnetworkId,
               const std::vector<NS_DOMAIN::TopoNode_T>& nodes) = delete;  // the id is borrowed

  // Whether the node at an index is below the subnetwork. A parent that is not among the nodes, a
  // root marker and a cycle end the chain. When nodes have the same id, the first node counts.
  bool isBelow(std::size_t node) const { return isBelowFor(parentOf_[node]); }

  // The same for a node with this parent, which need not be among the nodes. Takes time linear in
  // the number of nodes for an id that is no node's parent.
  bool leadToSubnetwork(const std::string& parentId) const;

 private:
  enum class Answer : char { kUnknown, kWalking, kBelow, kNotBelow };

  // A text that is the parent id of at least one node.
  struct Parent {
    Answer answer;              // for the nodes with this parent
    std::uint32_t grandparent;  // the parent of the first node with this id; kNone without a node
  };

  // A set of texts that may contain more texts than were added. Looking up a text takes less time
  // than hashing the text.
  class CoarseSet {
   public:
    void add(std::string_view text) { groups_.set(groupOf(text)); }
    bool mayContain(std::string_view text) const { return groups_.test(groupOf(text)); }

   private:
    static std::size_t groupOf(std::string_view text) {
      const std::size_t first = text.empty() ? 0 : static_cast<unsigned char>(text.front());
      return (first + 31 * text.size()) % kGroups;
    }

    static constexpr std::size_t kGroups = 1024;
    std::bitset<kGroups> groups_;
  };

  static constexpr std::uint32_t kNone = TextIndex::kNone;

  void collectParents();
  void linkParents();
  std::uint32_t numberOf(std::size_t node) const;
  Answer endOfChain(const std::string& parentId) const;
  void walk(std::uint32_t parent);
  bool isBelowFor(std::uint32_t parent) const { return parents_[parent].answer == Answer::kBelow; }

  const std::string& subnetworkId_;
  const std::vector<NS_DOMAIN::TopoNode_T>& nodes_;
  TextIndex ids_;                        // of the parents
  CoarseSet coarseIds_;                  // the texts of ids_
  std::vector<Parent> parents_;          // by number in ids_
  std::vector<std::uint32_t> parentOf_;  // the parent's number of each node
};

}  // namespace topo

#endif
