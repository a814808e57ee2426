#include "client/output/Tree.h"

#include <algorithm>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "client/base/Utf8.h"
#include "client/output/Table.h"
#include "hash/SaltedHash.h"

namespace topoctl {
namespace {

using globaldefs::NVSList_T;
using TopoManagementManager::Node_T;
using TopoManagementManager::NodeList_T;

constexpr std::string_view kIndentation = "  ";
constexpr std::size_t kMaxIndentedLevel = 32;  // keeps the output of a deep tree small
// The id of the physical root map, the parent of the top-level subnetworks in their names.
constexpr std::string_view kPhysicalRoot = "QNMAP_PHY_SUBMAP";
constexpr const char* kOrphansHeading =
    "Orphans (the parent is not in the view, or is below the node itself):\n";

// ---- names of nodes as keys; the nodes own the names

struct NameHash {
  std::size_t operator()(const NVSList_T* name) const {
    const salted::Hash hash;
    std::size_t all = name->length();
    for (CORBA::ULong i = 0; i < name->length(); ++i) {
      all = hash(all + hash((*name)[i].name.in()));
      all = hash(all + hash((*name)[i].value.in()));
    }
    return all;
  }
};

struct NameEqual {
  bool operator()(const NVSList_T* a, const NVSList_T* b) const {
    bool equal = a->length() == b->length();
    for (CORBA::ULong i = 0; equal && i < a->length(); ++i) {
      equal = std::string_view((*a)[i].name.in()) == (*b)[i].name.in() &&
              std::string_view((*a)[i].value.in()) == (*b)[i].value.in();
    }
    return equal;
  }
};

// ---- the relation of children to parents

// Numbers the nodes in the order received. Two further numbers are the imaginary parents of the
// nodes at the top and of the orphans.
class Tree {
 public:
  explicit Tree(const Batches<NodeList_T>& nodes) {
    nodes.forEach([this](const Node_T& node) { nodes_.push_back(&node); });
    findParents();
    orphanCycles();
    linkChildren();
  }

  std::size_t tops() const { return nodes_.size(); }
  std::size_t orphans() const { return nodes_.size() + 1; }
  bool hasOrphans() const { return firstChild_[orphans()] != kNone; }

  // visit(node, level) for everything below `top`, parents first, children in the order received.
  template <typename Visit>
  void forEachBelow(std::size_t top, Visit visit) const {
    std::vector<std::size_t> path = {firstChild_[top]};  // the next node of each level
    while (!path.empty()) {
      const std::size_t node = path.back();
      if (node == kNone) {
        path.pop_back();
        continue;
      }
      visit(*nodes_[node], path.size() - 1);
      path.back() = nextSibling_[node];
      path.push_back(firstChild_[node]);
    }
  }

 private:
  static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

  // The physical root map is never a node of a view.
  static bool isRootMap(const NVSList_T& parent) {
    const CORBA::ULong length = parent.length();
    return length > 0 && std::string_view(parent[length - 1].value.in()) == kPhysicalRoot;
  }

  void findParents() {
    salted::Map<const NVSList_T*, std::size_t, NameHash, NameEqual> numbers;
    for (std::size_t i = 0; i < nodes_.size(); ++i) {
      numbers.emplace(&nodes_[i]->name, i);  // children belong to the first node of a name
    }
    for (const Node_T* node : nodes_) {
      const auto found = numbers.find(&node->relatedName);
      const std::size_t named = found == numbers.end() ? orphans() : found->second;
      const bool top = node->relatedName.length() == 0 ||
                       (found == numbers.end() && isRootMap(node->relatedName));
      parents_.push_back(top ? tops() : named);
    }
  }

  // Walks from every node to its ancestors until a node that an earlier walk visited. A walk that
  // returns to one of its nodes has found a cycle; the members of the cycle become orphans.
  void orphanCycles() {
    std::vector<std::size_t> walks(nodes_.size(), kNone);
    for (std::size_t start = 0; start < nodes_.size(); ++start) {
      std::size_t node = start;
      while (node < nodes_.size() && walks[node] == kNone) {
        walks[node] = start;
        node = parents_[node];
      }
      if (node < nodes_.size() && walks[node] == start) {
        orphanCycleOf(node);
      }
    }
  }

  void orphanCycleOf(std::size_t member) {
    while (member < nodes_.size()) {
      const std::size_t parent = parents_[member];
      parents_[member] = orphans();
      member = parent;
    }
  }

  void linkChildren() {
    firstChild_.assign(nodes_.size() + 2, kNone);
    nextSibling_.assign(nodes_.size(), kNone);
    for (std::size_t i = nodes_.size(); i-- > 0;) {
      nextSibling_[i] = firstChild_[parents_[i]];
      firstChild_[parents_[i]] = i;
    }
  }

  std::vector<const Node_T*> nodes_;
  std::vector<std::size_t> parents_;
  std::vector<std::size_t> firstChild_;
  std::vector<std::size_t> nextSibling_;
};

// ---- lines

std::string indentation(std::size_t level) {
  std::string text;
  for (std::size_t i = 0; i < std::min(level, kMaxIndentedLevel); ++i) {
    text += kIndentation;
  }
  return level > kMaxIndentedLevel ? text + "(" + std::to_string(level) + ") " : text;
}

void printBelow(const Tree& tree, std::size_t top, std::size_t topLevel, std::ostream& out) {
  tree.forEachBelow(top, [topLevel, &out](const Node_T& node, std::size_t level) {
    const std::string label = escapeControls(node.nativeEMSName.in());
    out << indentation(topLevel + level) << label << (label.empty() ? "" : " ") << "["
        << tableText(NamePairs{&node.name}) << "]\n";
  });
}

}  // namespace

void printTree(const Batches<NodeList_T>& nodes, std::ostream& out) {
  const Tree tree(nodes);
  printBelow(tree, tree.tops(), 0, out);
  if (tree.hasOrphans()) {
    out << kOrphansHeading;
    printBelow(tree, tree.orphans(), 1, out);
  }
}

}  // namespace topoctl
