#include "topomanagementmgr/ParentChains.h"

#include <algorithm>

namespace topo {
namespace {

// "" is not a root marker here: a domain node may have the id "".
bool isRootMarker(const std::string& id) {
  return id == NS_DOMAIN::kPhysicalRoot || id == NS_DOMAIN::kZeroId;
}

}  // namespace

ParentChains::ParentChains(const std::string& subnetworkId,
                           const std::vector<NS_DOMAIN::TopoNode_T>& nodes)
    : subnetworkId_(subnetworkId), nodes_(nodes) {
  collectParents();
  linkParents();
  for (std::uint32_t parent = 0; parent < parents_.size(); ++parent) {
    walk(parent);
  }
}

// The answer for nodes with this parent when the parent ends the chain, else kUnknown. Compares
// with the subnetwork before the root markers: a subnetwork with the id "0" has children.
ParentChains::Answer ParentChains::endOfChain(const std::string& parentId) const {
  if (parentId == subnetworkId_) {
    return Answer::kBelow;
  }
  return isRootMarker(parentId) ? Answer::kNotBelow : Answer::kUnknown;
}

void ParentChains::collectParents() {
  parentOf_.reserve(nodes_.size());
  const std::string* previous = nullptr;
  for (const NS_DOMAIN::TopoNode_T& node : nodes_) {
    // Nodes with the same parent usually follow each other.
    if (previous != nullptr && *previous == node.parentId) {
      parentOf_.push_back(parentOf_.back());
      continue;
    }
    previous = &node.parentId;
    const std::uint32_t parent = ids_.add(node.parentId);
    if (parent == parents_.size()) {
      parents_.push_back({endOfChain(node.parentId), kNone});
      coarseIds_.add(node.parentId);
    }
    parentOf_.push_back(parent);
  }
}

// The number of the node's id; kNone for a node that is no node's parent.
std::uint32_t ParentChains::numberOf(std::size_t node) const {
  const std::string& id = nodes_[node].nodeId;
  // The next node is often a child. Its parent has been found, so the table need not be searched.
  if (node + 1 < nodes_.size() && nodes_[node + 1].parentId == id) {
    return parentOf_[node + 1];
  }
  return coarseIds_.mayContain(id) ? ids_.find(id) : kNone;
}

void ParentChains::linkParents() {
  for (std::size_t i = 0; i < nodes_.size(); ++i) {
    const std::uint32_t parent = numberOf(i);
    if (parent != kNone && parents_[parent].grandparent == kNone) {
      parents_[parent].grandparent = parentOf_[i];
    }
  }
  for (Parent& parent : parents_) {
    if (parent.answer == Answer::kUnknown && parent.grandparent == kNone) {
      parent.answer = Answer::kNotBelow;
    }
  }
}

void ParentChains::walk(std::uint32_t parent) {
  std::uint32_t end = parent;
  while (parents_[end].answer == Answer::kUnknown) {
    parents_[end].answer = Answer::kWalking;
    end = parents_[end].grandparent;
  }
  // kWalking: this walk has passed the parent before, so the chain is a cycle.
  const Answer answer = isBelowFor(end) ? Answer::kBelow : Answer::kNotBelow;
  while (parents_[parent].answer == Answer::kWalking) {
    parents_[parent].answer = answer;
    parent = parents_[parent].grandparent;
  }
}

bool ParentChains::leadToSubnetwork(const std::string& parentId) const {
  const std::uint32_t parent = ids_.find(parentId);
  if (parent != kNone) {
    return isBelowFor(parent);
  }
  const Answer end = endOfChain(parentId);
  if (end != Answer::kUnknown) {
    return end == Answer::kBelow;
  }
  const auto node =
      std::find_if(nodes_.begin(), nodes_.end(),
                   [&](const NS_DOMAIN::TopoNode_T& each) { return each.nodeId == parentId; });
  return node != nodes_.end() && isBelow(static_cast<std::size_t>(node - nodes_.begin()));
}

}  // namespace topo
