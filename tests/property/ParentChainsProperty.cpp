#include "topomanagementmgr/ParentChains.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/property/Oracles.h"
#include "tests/property/Random.h"
#include "tests/support/CollidingKeys.h"
#include "topomanagementmgr/TopoManagementMgr.h"

namespace {

using NS_DOMAIN::TopoNode_T;
using Nodes = std::vector<TopoNode_T>;

constexpr int kMany = 200000;

TopoNode_T node(const std::string& id, const std::string& parentId) {
  TopoNode_T result;
  result.nodeId = id;
  result.parentId = parentId;
  return result;
}

// One of a few ids; sometimes a root marker or an id without a node.
std::string randomId(Random& random, int spread) {
  static const char* const kSpecial[] = {"", "0", "00", oracle::kRoot, "nobody", "NE=5"};
  const int number = random.number(-1, spread);
  return number >= 0 ? std::to_string(number + 1) : kSpecial[random.number(0, 5)];
}

// Few ids give many duplicates, many ids give long chains; both give cycles.
Nodes randomNodes(Random& random, int spread) {
  Nodes nodes;
  for (int left = random.number(0, 30); left > 0; --left) {
    nodes.push_back(node(randomId(random, spread), randomId(random, spread)));
  }
  return nodes;
}

// A random tree with unique ids, in which some parents are removed or reversed.
Nodes randomTree(Random& random) {
  const int size = random.number(1, 40);
  Nodes nodes;
  for (int i = 1; i <= size; ++i) {
    const int parent = random.number(std::max(0, i - 4), i - 1);
    nodes.push_back(node(std::to_string(i), parent == 0 ? oracle::kRoot : std::to_string(parent)));
  }
  for (int wounds = random.number(0, 3); wounds > 0; --wounds) {
    nodes[static_cast<std::size_t>(random.number(0, size - 1))].parentId =
        random.number(0, 1) == 0 ? "nobody" : std::to_string(random.number(1, size));
  }
  for (int swaps = random.number(0, size); swaps > 0; --swaps) {
    std::swap(nodes[static_cast<std::size_t>(random.number(0, size - 1))],
              nodes[static_cast<std::size_t>(random.number(0, size - 1))]);
  }
  return nodes;
}

// Compares the answers for every node of a network, and for ids without a node.
void expectTheOraclesAnswers(Random& random, const std::string& subnetworkId, const Nodes& nodes) {
  topo::ParentChains chains(subnetworkId, nodes);
  for (std::size_t i = 0; i < nodes.size(); ++i) {
    const TopoNode_T& each = nodes[i];
    const bool expected = oracle::isBelow(subnetworkId, each.parentId, nodes);
    ASSERT_EQ(chains.isBelow(i), expected) << each.parentId;
    ASSERT_EQ(chains.leadToSubnetwork(each.parentId), expected) << each.parentId;
    ASSERT_EQ(TopoManagementMgr::isBelowTopoSubnetwork(subnetworkId, each.parentId, nodes),
              expected)
        << each.parentId;
  }
  // Cached answers must not change later answers, in any order.
  for (int questions = 0; questions < 20; ++questions) {
    const std::string id = randomId(random, 30);
    ASSERT_EQ(chains.leadToSubnetwork(id), oracle::isBelow(subnetworkId, id, nodes)) << id;
  }
}

TEST(TopoParentChainsProperty, EqualThePlainWalkThroughRandomNetworks) {
  Random random;
  for (int round = 0; round < 3000; ++round) {
    SCOPED_TRACE("round " + std::to_string(round) + " of seed " + std::to_string(random.seed()));
    const int spread = random.number(0, 30);
    const Nodes nodes = randomNodes(random, spread);
    ASSERT_NO_FATAL_FAILURE(expectTheOraclesAnswers(random, randomId(random, spread), nodes));
  }
}

TEST(TopoParentChainsProperty, EqualThePlainWalkThroughDamagedTrees) {
  Random random;
  for (int round = 0; round < 2000; ++round) {
    SCOPED_TRACE("round " + std::to_string(round) + " of seed " + std::to_string(random.seed()));
    const Nodes nodes = randomTree(random);
    const std::string subnetworkId =
        nodes[static_cast<std::size_t>(random.number(0, static_cast<int>(nodes.size()) - 1))]
            .nodeId;
    ASSERT_NO_FATAL_FAILURE(expectTheOraclesAnswers(random, subnetworkId, nodes));
  }
}

// --- Chains for which a full walk from every node would take too long.

// Node n has the parent n - 1; node 1 has the given parent.
Nodes longChain(const std::string& top) {
  Nodes nodes;
  nodes.reserve(kMany);
  for (int i = 1; i <= kMany; ++i) {
    nodes.push_back(node(std::to_string(i), i == 1 ? top : std::to_string(i - 1)));
  }
  return nodes;
}

// The number of nodes below a subnetwork.
int countBelow(const std::string& subnetworkId, const Nodes& nodes) {
  topo::ParentChains chains(subnetworkId, nodes);
  int below = 0;
  for (std::size_t i = 0; i < nodes.size(); ++i) {
    below += chains.isBelow(i) ? 1 : 0;
  }
  return below;
}

TEST(TopoLongParentChains, LeadToTheTopInEitherOrderOfTheNodes) {
  Nodes nodes = longChain("S");
  EXPECT_EQ(countBelow("S", nodes), kMany);
  std::reverse(nodes.begin(), nodes.end());
  EXPECT_EQ(countBelow("S", nodes), kMany);
}

TEST(TopoLongParentChains, LeadToASubnetworkInTheMiddle) {
  Nodes nodes = longChain(oracle::kRoot);
  const int middle = kMany / 2;
  EXPECT_EQ(countBelow(std::to_string(middle), nodes), kMany - middle);
  std::reverse(nodes.begin(), nodes.end());
  EXPECT_EQ(countBelow(std::to_string(middle), nodes), kMany - middle);
}

TEST(TopoLongParentChains, LeadNowhereWithoutTheSubnetwork) {
  for (const char* top : {oracle::kRoot, "nobody"}) {
    Nodes nodes = longChain(top);
    EXPECT_EQ(countBelow("S", nodes), 0) << top;
    std::reverse(nodes.begin(), nodes.end());
    EXPECT_EQ(countBelow("S", nodes), 0) << top;
  }
}

TEST(TopoLongParentChains, LeadNowhereInACycle) {
  for (const int top : {1, kMany / 2, kMany}) {
    Nodes nodes = longChain(std::to_string(top));
    EXPECT_EQ(countBelow("S", nodes), 0) << top;
    std::reverse(nodes.begin(), nodes.end());
    EXPECT_EQ(countBelow("S", nodes), 0) << top;
  }
}

TEST(TopoLongParentChains, LeadToASubnetworkInACycle) {
  Nodes nodes = longChain(std::to_string(kMany));
  EXPECT_EQ(countBelow("1000", nodes), kMany);
  std::reverse(nodes.begin(), nodes.end());
  EXPECT_EQ(countBelow("1000", nodes), kMany);
}

// The child of the second node with the id "1" follows that node.
TEST(TopoLongParentChains, LeadThroughTheFirstOfTwoNodesWithAnId) {
  EXPECT_EQ(countBelow("S", {node("1", "S"), node("1", "nobody"), node("2", "1")}), 2);
  EXPECT_EQ(countBelow("S", {node("1", "nobody"), node("1", "S"), node("2", "1")}), 1);
}

double costOfChains(const std::vector<std::string>& ids) {
  Nodes nodes;
  for (const std::string& id : ids) {
    nodes.push_back(node(id, nodes.empty() ? "top" : nodes.back().nodeId));
  }
  const std::string top = "top";
  return support::costOf([&] {
    topo::ParentChains chains(top, nodes);
    for (const TopoNode_T& each : nodes) {
      EXPECT_TRUE(chains.leadToSubnetwork(each.parentId));
    }
  });
}

TEST(TopoLongParentChains, FindIdsThatCollideInAPlainHashAsQuickly) {
  const double usual = costOfChains(support::ordinaryTexts(3000));
  EXPECT_PRED2(support::isComparable, costOfChains(support::collidingTexts(3000)), usual);
}

}  // namespace
