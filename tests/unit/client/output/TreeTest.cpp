#include "client/output/Tree.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "include/platform/domain/DomainRecords.h"
#include "tests/support/CollidingKeys.h"
#include "tests/unit/client/support/WithAgent.h"

namespace topoctl {
namespace {

using testing::HasSubstr;
using TopoManagementManager::NodeList_T;

const std::string kHeading =
    "Orphans (the parent is not in the view, or is below the node itself):\n";

struct Member {
  std::string id;
  std::string parent;  // empty: none
};

NodeList_T nodesOf(const std::vector<Member>& members) {
  NodeList_T nodes;
  nodes.length(static_cast<CORBA::ULong>(members.size()));
  for (CORBA::ULong i = 0; i < nodes.length(); ++i) {
    addPair(nodes[i].name, "EMS", "e");
    addPair(nodes[i].name, "TopoSubnetwork", members[i].id);
    nodes[i].nativeEMSName = ("the " + members[i].id).c_str();
    if (!members[i].parent.empty()) {
      addPair(nodes[i].relatedName, "EMS", "e");
      addPair(nodes[i].relatedName, "TopoSubnetwork", members[i].parent);
    }
  }
  return nodes;
}

std::string drawn(const NodeList_T& nodes) {
  Batches<NodeList_T> batches;
  batches.add(new NodeList_T(nodes));
  std::ostringstream out;
  printTree(batches, out);
  return out.str();
}

std::string drawn(const std::vector<Member>& members) {
  return drawn(nodesOf(members));
}

TEST(Tree, IndentsChildrenInTheOrderReceived) {
  EXPECT_EQ(drawn({{"b2", "b"}, {"a", ""}, {"a1", "a"}, {"b", ""}, {"b1", "b"}, {"b2x", "b2"}}),
            "the a [TopoSubnetwork=a]\n"
            "  the a1 [TopoSubnetwork=a1]\n"
            "the b [TopoSubnetwork=b]\n"
            "  the b2 [TopoSubnetwork=b2]\n"
            "    the b2x [TopoSubnetwork=b2x]\n"
            "  the b1 [TopoSubnetwork=b1]\n");
}

TEST(Tree, DrawsChildrenOfThePhysicalRootMapAtTheTop) {
  EXPECT_EQ(drawn({{"a", NS_DOMAIN::kPhysicalRoot}, {"a1", "a"}, {"b", "nowhere"}}),
            "the a [TopoSubnetwork=a]\n"
            "  the a1 [TopoSubnetwork=a1]\n" +
                kHeading + "  the b [TopoSubnetwork=b]\n");
}

TEST(Tree, WritesNothingWithoutNodes) {
  EXPECT_EQ(drawn(std::vector<Member>{}), "");
}

TEST(Tree, DrawsOrphansWithTheirDescendants) {
  EXPECT_EQ(drawn({{"x1", "x"}, {"a", ""}, {"x", "gone"}, {"y", "gone"}}),
            "the a [TopoSubnetwork=a]\n" + kHeading +
                "  the x [TopoSubnetwork=x]\n"
                "    the x1 [TopoSubnetwork=x1]\n"
                "  the y [TopoSubnetwork=y]\n");
}

TEST(Tree, DrawsTheMembersOfACycleAsOrphans) {
  EXPECT_EQ(drawn({{"tail", "q"}, {"p", "q"}, {"q", "r"}, {"r", "p"}, {"self", "self"}}),
            kHeading +
                "  the p [TopoSubnetwork=p]\n"
                "  the q [TopoSubnetwork=q]\n"
                "    the tail [TopoSubnetwork=tail]\n"
                "  the r [TopoSubnetwork=r]\n"
                "  the self [TopoSubnetwork=self]\n");
}

TEST(Tree, DrawsChildrenBelowTheFirstNodeOfTheirParentsName) {
  EXPECT_EQ(drawn({{"a", ""}, {"a", ""}, {"a1", "a"}, {"a", "a"}}),
            "the a [TopoSubnetwork=a]\n"
            "  the a1 [TopoSubnetwork=a1]\n"
            "  the a [TopoSubnetwork=a]\n"
            "the a [TopoSubnetwork=a]\n");
}

TEST(Tree, ComparesWholeNames) {
  NodeList_T nodes = nodesOf({{"a", ""}, {"a1", "a"}, {"a2", "a"}, {"a3", "a"}});
  nodes[1].relatedName[0].value = "other";
  nodes[2].relatedName[1].name = "ManagedElement";
  nodes[3].relatedName.length(1);
  EXPECT_EQ(drawn(nodes), "the a [TopoSubnetwork=a]\n" + kHeading +
                              "  the a1 [TopoSubnetwork=a1]\n"
                              "  the a2 [TopoSubnetwork=a2]\n"
                              "  the a3 [TopoSubnetwork=a3]\n");
}

TEST(Tree, EscapesControlCharacters) {
  NodeList_T nodes = nodesOf({{"a\nb", ""}, {"c", ""}, {"d", ""}});
  nodes[0].nativeEMSName = "\x1b[2J Z\u00fcrich \xff";
  nodes[1].nativeEMSName = "";
  nodes[2].name.length(0);
  EXPECT_EQ(drawn(nodes),
            "\\x1b[2J Z\u00fcrich \ufffd [TopoSubnetwork=a\\nb]\n"
            "[TopoSubnetwork=c]\n"
            "the d []\n");
}

std::vector<Member> chain(std::size_t length) {
  std::vector<Member> members = {{"n0", ""}};
  for (std::size_t i = 1; i < length; ++i) {
    members.push_back({"n" + std::to_string(i), members.back().id});
  }
  return members;
}

TEST(Tree, WritesTheLevelBeyondTheMaximumIndentation) {
  const std::string tree = drawn(chain(35));
  const std::string deepest(64, ' ');
  EXPECT_THAT(tree, HasSubstr("\n" + deepest + "the n32 [TopoSubnetwork=n32]\n" + deepest +
                              "(33) the n33 [TopoSubnetwork=n33]\n" + deepest +
                              "(34) the n34 [TopoSubnetwork=n34]\n"));
}

TEST(Tree, DrawsADeepChain) {
  std::vector<Member> members = chain(100000);
  for (const bool isReversed : {false, true}) {
    const std::string tree = drawn(members);
    EXPECT_EQ(std::count(tree.begin(), tree.end(), '\n'), 100000);
    EXPECT_THAT(tree.substr(tree.size() - 200),
                testing::EndsWith("(99999) the n99999 [TopoSubnetwork=n99999]\n"))
        << isReversed;
    std::reverse(members.begin(), members.end());
  }
}

TEST(Tree, DrawsADeepCycle) {
  std::vector<Member> members = chain(100000);
  members.front().parent = members.back().id;
  const std::string tree = drawn(members);
  EXPECT_EQ(std::count(tree.begin(), tree.end(), '\n'), 100001);
  EXPECT_EQ(tree.substr(0, kHeading.size()), kHeading);
}

class TreeOfAnAgent : public WithAgent {};

TEST_F(TreeOfAnAgent, IsTheSameForEveryBatchSize) {
  script.nodes = nodesOf({{"b", "a"}, {"a", ""}, {"c", "b"}});
  const std::string expected = drawn(script.nodes);
  for (const std::uint32_t howMany : {0U, 1U, 2U, 3U, 4U, 4294967295U}) {
    Options tree = options("tree", howMany);
    tree.format = Format::kTable;
    EXPECT_EQ(output(tree), expected);
  }
  EXPECT_EQ(script.firstCall(), "topo(0)");
}

TEST(Tree, NeedsNoMoreTimeForNamesThatCollideInAnUnsaltedHash) {
  const auto cost = [](const std::vector<std::string>& ids) {
    std::vector<Member> members;
    for (const std::string& id : ids) {
      members.push_back({id, ids[0]});
    }
    const NodeList_T nodes = nodesOf(members);
    return support::costOf([&] { drawn(nodes); });
  };
  const double usual = cost(support::ordinaryTexts(2000));
  EXPECT_PRED2(support::isComparable, cost(support::collidingTexts(2000)), usual);
}

}  // namespace
}  // namespace topoctl
