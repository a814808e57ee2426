#include "topomanagementmgr/ParentChains.h"

namespace topo {
namespace {

// "" is not a root marker here: a domain node may have the id "".
bool isRootMarker(const std::string& id) {
  return id == NS_DOMAIN::kPhysicalRoot || id == NS_DOMAIN::kZeroId;
}

}  // namespace

ParentChains::ParentChains(const std::string& subnetworkId,
                           const std::vector<NS_DOMAIN::TopoNode_T>& nodes)
    : subnetworkId_(subnetworkId), nodes_(nodes), answers_(nodes.size(), Answer::kUnknown) {
  first_.reserve(nodes.size());
  for (std::size_t i = 0; i < nodes.size(); ++i) {
    first_.emplace(nodes[i].nodeId, i);
  }
}

// Compares with the subnetwork before the root markers: a subnetwork with the id "0" has children.
ParentChains::Answer ParentChains::answerAt(const std::string& id, std::size_t& index) const {
  if (id == subnetworkId_) {
    return Answer::kBelow;
  }
  if (isRootMarker(id)) {
    return Answer::kNotBelow;
  }
  const auto node = first_.find(id);
  if (node == first_.end()) {
    return Answer::kNotBelow;
  }
  index = node->second;
  // kWalking: the current walk has passed the node before, so the chain is a cycle.
  return answers_[index] == Answer::kWalking ? Answer::kNotBelow : answers_[index];
}

bool ParentChains::leadToSubnetwork(const std::string& parentId) {
  std::vector<std::size_t> walked;
  const std::string* id = &parentId;
  std::size_t index = 0;
  Answer answer = answerAt(*id, index);
  while (answer == Answer::kUnknown) {
    answers_[index] = Answer::kWalking;
    walked.push_back(index);
    id = &nodes_[index].parentId;
    answer = answerAt(*id, index);
  }
  for (const std::size_t passed : walked) {
    answers_[passed] = answer;
  }
  return answer == Answer::kBelow;
}

}  // namespace topo
