#include "topo/TmfRecords.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "tests/fakes/Journal.h"

namespace {

using fakes::printed;
using globaldefs::NVSList_T;
using topologicalLink::TopologicalLink_T;
using topologicalLink::TopologicalLinkList_T;
using TopoManagementManager::Node_T;
using TopoManagementManager::NodeList_T;

NVSList_T onePair(const std::string& name, const std::string& value) {
  NVSList_T list;
  topo::setLength(list, 1);
  topo::setPair(list, 0, name.c_str(), value);
  return list;
}

Node_T someNode(const std::string& label) {
  Node_T node;
  node.name = onePair("Name", label);
  node.nativeEMSName = label.c_str();
  node.nodeType = 1;
  node.nodeParam1 = -2;
  node.nodeParam2 = 3;
  node.relatedName = onePair("Parent", label);
  node.additionalInfo = onePair("Info", label);
  return node;
}

void expectSome(const Node_T& node, const std::string& label) {
  EXPECT_EQ(printed(node.name), "[Name=" + label + "]");
  EXPECT_EQ(node.nativeEMSName.in(), label);
  EXPECT_EQ(node.nodeType, 1U);
  EXPECT_EQ(node.nodeParam1, -2);
  EXPECT_EQ(node.nodeParam2, 3);
  EXPECT_EQ(printed(node.relatedName), "[Parent=" + label + "]");
  EXPECT_EQ(printed(node.additionalInfo), "[Info=" + label + "]");
}

void expectFresh(const Node_T& node) {
  EXPECT_EQ(node.name.length(), 0U);
  EXPECT_STREQ(node.nativeEMSName.in(), "");
  EXPECT_EQ(node.nodeType, 0U);
  EXPECT_EQ(node.nodeParam1, 0);
  EXPECT_EQ(node.nodeParam2, 0);
  EXPECT_EQ(node.relatedName.length(), 0U);
  EXPECT_EQ(node.additionalInfo.length(), 0U);
}

TopologicalLink_T someLink(const std::string& label) {
  TopologicalLink_T link;
  link.name = onePair("Name", label);
  link.userLabel = label.c_str();
  link.nativeEMSName = label.c_str();
  link.owner = label.c_str();
  link.direction = globaldefs::CD_BI;
  link.rate = 7;
  link.aEndTP = onePair("A", label);
  link.zEndTP = onePair("Z", label);
  link.additionalInfo = onePair("Info", label);
  return link;
}

void expectSome(const TopologicalLink_T& link, const std::string& label) {
  EXPECT_EQ(printed(link.name), "[Name=" + label + "]");
  EXPECT_EQ(link.userLabel.in(), label);
  EXPECT_EQ(link.nativeEMSName.in(), label);
  EXPECT_EQ(link.owner.in(), label);
  EXPECT_EQ(link.direction, globaldefs::CD_BI);
  EXPECT_EQ(link.rate, 7);
  EXPECT_EQ(printed(link.aEndTP), "[A=" + label + "]");
  EXPECT_EQ(printed(link.zEndTP), "[Z=" + label + "]");
  EXPECT_EQ(printed(link.additionalInfo), "[Info=" + label + "]");
}

void expectFresh(const TopologicalLink_T& link) {
  EXPECT_EQ(link.name.length(), 0U);
  EXPECT_STREQ(link.userLabel.in(), "");
  EXPECT_STREQ(link.nativeEMSName.in(), "");
  EXPECT_STREQ(link.owner.in(), "");
  EXPECT_EQ(link.direction, globaldefs::CD_UNI);
  EXPECT_EQ(link.rate, 0);
  EXPECT_EQ(link.aEndTP.length(), 0U);
  EXPECT_EQ(link.zEndTP.length(), 0U);
  EXPECT_EQ(link.additionalInfo.length(), 0U);
}

NodeList_T threeNodes() {
  NodeList_T nodes;
  topo::setLength(nodes, 3);
  nodes[0] = someNode("a");
  nodes[1] = someNode("b");
  nodes[2] = someNode("c");
  return nodes;
}

// --- Fresh records.

TEST(TmfNode, IsFreshWithEmptyTextsAndListsAndZeros) {
  expectFresh(topo::freshRecord<Node_T>());
}

TEST(TmfNode, HasEmptyTextsAndListsOfItself) {
  Node_T node;
  EXPECT_EQ(node.name.length(), 0U);
  EXPECT_STREQ(node.nativeEMSName.in(), "");
  EXPECT_EQ(node.relatedName.length(), 0U);
  EXPECT_EQ(node.additionalInfo.length(), 0U);
}

TEST(TmfLink, IsFreshWithEmptyTextsAndListsAndZeros) {
  expectFresh(topo::freshRecord<TopologicalLink_T>());
}

TEST(TmfPair, IsFreshWithEmptyTexts) {
  const auto pair = topo::freshRecord<globaldefs::NameAndStringValue_T>();
  EXPECT_STREQ(pair.name.in(), "");
  EXPECT_STREQ(pair.value.in(), "");
}

TEST(TmfPair, HasAFreshFormWithAnyValue) {
  const auto pair = topo::freshRecord<notifications::NameAndAnyValue_T>();
  EXPECT_STREQ(pair.name.in(), "");
}

TEST(TmfNode, HasFieldsOfTheWidthsOfTheInterface) {
  static_assert(std::is_same_v<decltype(Node_T::nodeType), CORBA::ULong>);
  static_assert(std::is_same_v<decltype(Node_T::nodeParam1), CORBA::Long>);
  static_assert(std::is_same_v<decltype(Node_T::nodeParam2), CORBA::Long>);
  static_assert(std::is_same_v<decltype(TopologicalLink_T::rate), CORBA::Short>);
}

// Whether the members are in this order in memory.
template <typename... Members>
bool ascend(const Members&... members) {
  const std::vector<const char*> addresses = {
      reinterpret_cast<const char*>(std::addressof(members))...};
  return std::is_sorted(addresses.begin(), addresses.end());
}

TEST(TmfNode, HasItsFieldsInTheOrderOfTheInterface) {
  const auto node = topo::freshRecord<Node_T>();
  EXPECT_TRUE(ascend(node.name, node.nativeEMSName, node.nodeType, node.nodeParam1, node.nodeParam2,
                     node.relatedName, node.additionalInfo));
}

TEST(TmfLink, HasItsFieldsInTheOrderOfTheInterface) {
  const auto link = topo::freshRecord<TopologicalLink_T>();
  EXPECT_TRUE(ascend(link.name, link.userLabel, link.nativeEMSName, link.owner, link.direction,
                     link.rate, link.aEndTP, link.zEndTP, link.additionalInfo));
}

TEST(TmfPair, HasItsNameBeforeItsValue) {
  const globaldefs::NameAndStringValue_T pair;
  EXPECT_TRUE(ascend(pair.name, pair.value));
}

TEST(TmfLink, HasDirectionsWithTheValuesOfTheInterface) {
  static_assert(globaldefs::CD_UNI == 0);
  static_assert(globaldefs::CD_BI == 1);
}

TEST(TmfException, HasTypesWithTheValuesOfTheInterface) {
  static_assert(globaldefs::EXCPT_NOT_IMPLEMENTED == 0);
  static_assert(globaldefs::EXCPT_INTERNAL_ERROR == 1);
  static_assert(globaldefs::EXCPT_INVALID_INPUT == 2);
}

// --- Copies.

TEST(TmfNode, KeepsItsTextsWhenItIsAssignedToItself) {
  Node_T node = someNode("a");
  Node_T& same = node;
  node = same;
  expectSome(node, "a");
}

TEST(TmfNode, KeepsATextThatIsAssignedToItself) {
  Node_T node = someNode("a");
  auto& same = node.nativeEMSName;
  node.nativeEMSName = same;
  EXPECT_STREQ(node.nativeEMSName.in(), "a");
}

TEST(TmfNode, IsCopiedDeeply) {
  Node_T original = someNode("a");
  const Node_T copy = original;
  Node_T assigned;
  assigned = original;
  original.name[0].value = CORBA::string_dup("changed");
  original.nativeEMSName = CORBA::string_dup("changed");
  original.relatedName[0].value = CORBA::string_dup("changed");
  original.additionalInfo.length(0);
  expectSome(copy, "a");
  expectSome(assigned, "a");
}

TEST(TmfLink, IsCopiedDeeply) {
  TopologicalLink_T original = someLink("a");
  const TopologicalLink_T copy = original;
  original.owner = CORBA::string_dup("changed");
  original.aEndTP[0].value = CORBA::string_dup("changed");
  original.zEndTP.length(0);
  EXPECT_STREQ(copy.owner.in(), "a");
  EXPECT_EQ(printed(copy.aEndTP), "[A=a]");
  EXPECT_EQ(printed(copy.zEndTP), "[Z=a]");
  EXPECT_EQ(copy.direction, globaldefs::CD_BI);
  EXPECT_EQ(copy.rate, 7);
}

TEST(TmfNode, IsCopiedIntoAnAny) {
  Node_T node = someNode("a");
  CORBA::Any any;
  any <<= node;
  node.nativeEMSName = CORBA::string_dup("changed");
  const Node_T* inside = nullptr;
  ASSERT_TRUE(any >>= inside);
  expectSome(*inside, "a");
}

// --- Sizing of lists.

TEST(TmfSetLength, GivesAnEmptyListTheLengthZero) {
  NodeList_T nodes;
  topo::setLength(nodes, 0);
  EXPECT_EQ(nodes.length(), 0U);
  NodeList_T copy = nodes;
  EXPECT_EQ(copy.length(), 0U);
}

TEST(TmfSetLength, MakesFreshNodes) {
  NodeList_T nodes;
  topo::setLength(nodes, 5);
  ASSERT_EQ(nodes.length(), 5U);
  for (CORBA::ULong i = 0; i < 5; ++i) {
    expectFresh(nodes[i]);
  }
}

TEST(TmfSetLength, LeavesTheListTheOwnerOfItsRecords) {
  NodeList_T nodes;
  topo::setLength(nodes, 2);
  EXPECT_TRUE(nodes.release());
}

TEST(TmfSetLength, GivesFreshNodesWhenAListShrinksAndGrows) {
  NodeList_T nodes = threeNodes();
  topo::setLength(nodes, 1);
  topo::setLength(nodes, 3);
  ASSERT_EQ(nodes.length(), 3U);
  expectSome(nodes[0], "a");
  expectFresh(nodes[1]);
  expectFresh(nodes[2]);
}

TEST(TmfSetLength, GivesFreshNodesWhenAListIsEmptiedAndGrows) {
  NodeList_T nodes = threeNodes();
  topo::setLength(nodes, 0);
  topo::setLength(nodes, 3);
  for (CORBA::ULong i = 0; i < 3; ++i) {
    expectFresh(nodes[i]);
  }
}

TEST(TmfSetLength, GivesFreshLinksWhenAListShrinksAndGrows) {
  TopologicalLinkList_T links;
  topo::setLength(links, 2);
  links[0] = someLink("a");
  links[1] = someLink("b");
  topo::setLength(links, 1);
  topo::setLength(links, 2);
  EXPECT_STREQ(links[0].owner.in(), "a");
  expectFresh(links[1]);
}

TEST(TmfSetLength, GivesFreshPairsWhenAListShrinksAndGrows) {
  NVSList_T pairs;
  topo::setLength(pairs, 2);
  topo::setPair(pairs, 0, "n0", "v0");
  topo::setPair(pairs, 1, "n1", "v1");
  topo::setLength(pairs, 1);
  topo::setLength(pairs, 2);
  EXPECT_EQ(printed(pairs), "[n0=v0, =]");
}

TEST(TmfSetLength, KeepsTheRecordsThatStayWhenAListGrows) {
  NodeList_T nodes = threeNodes();
  topo::setLength(nodes, 100);
  expectSome(nodes[0], "a");
  expectSome(nodes[1], "b");
  expectSome(nodes[2], "c");
  expectFresh(nodes[3]);
  expectFresh(nodes[99]);
}

TEST(TmfSetLength, KeepsTheRecordsThatStayWhenAListShrinks) {
  NodeList_T nodes = threeNodes();
  topo::setLength(nodes, 2);
  ASSERT_EQ(nodes.length(), 2U);
  expectSome(nodes[0], "a");
  expectSome(nodes[1], "b");
}

TEST(TmfSetLength, GivesFreshNodesBehindAShorterListThatWasAssigned) {
  NodeList_T nodes = threeNodes();
  NodeList_T shorter;
  topo::setLength(shorter, 1);
  nodes = shorter;
  topo::setLength(nodes, 3);
  expectFresh(nodes[1]);
  expectFresh(nodes[2]);
}

TEST(TmfSetLength, MakesRoomForExactlyTheLengthWhenAListGrows) {
  NodeList_T nodes;
  topo::setLength(nodes, 3);
  EXPECT_EQ(nodes.maximum(), 3U);
  topo::setLength(nodes, 4);
  EXPECT_EQ(nodes.maximum(), 4U);
  topo::setLength(nodes, 2);
  EXPECT_EQ(nodes.maximum(), 4U);
}

TEST(TmfSetLength, UsesTheRoomThatAListWasMadeWith) {
  NodeList_T nodes(5);
  topo::setLength(nodes, 2);
  ASSERT_EQ(nodes.length(), 2U);
  EXPECT_EQ(nodes.maximum(), 5U);
  EXPECT_TRUE(nodes.release());
  expectFresh(nodes[0]);
  expectFresh(nodes[1]);
}

TEST(TmfSetLength, OwnsTheRecordsOfAListThatBorrowedItsRecords) {
  Node_T borrowed[1];
  borrowed[0] = someNode("a");
  NodeList_T nodes(1, 1, borrowed, false);
  topo::setLength(nodes, 2);
  EXPECT_TRUE(nodes.release());
  nodes[0].nativeEMSName = CORBA::string_dup("changed");
  expectSome(borrowed[0], "a");
}

TEST(TmfSetLength, KeepsBorrowedRecordsUnchanged) {
  Node_T borrowed[3];
  borrowed[0] = someNode("a");
  borrowed[1] = someNode("b");
  borrowed[2] = someNode("c");
  NodeList_T nodes(3, 3, borrowed, false);
  topo::setLength(nodes, 1);
  ASSERT_EQ(nodes.length(), 1U);
  expectSome(borrowed[1], "b");
  expectSome(borrowed[2], "c");
  topo::setLength(nodes, 3);
  ASSERT_EQ(nodes.length(), 3U);
  EXPECT_FALSE(nodes.release());
  EXPECT_EQ(&nodes[0], &borrowed[0]);
  expectSome(borrowed[0], "a");
  expectSome(borrowed[1], "b");
  expectSome(borrowed[2], "c");
}

TEST(TmfSetLength, ChangesNothingWhenTheLengthStays) {
  NodeList_T nodes = threeNodes();
  topo::setLength(nodes, 3);
  expectSome(nodes[2], "c");
}

// --- Access by index.

TEST(TmfAt, GivesTheElement) {
  NodeList_T nodes = threeNodes();
  EXPECT_EQ(&topo::at(nodes, 2), &nodes[2]);
}

TEST(TmfAt, RaisesBadParamAtTheLength) {
  NodeList_T nodes = threeNodes();
  try {
    topo::at(nodes, 3);
    ADD_FAILURE() << "an element at the length";
  } catch (const CORBA::BAD_PARAM& failure) {
    EXPECT_EQ(failure.minor(), 0U);
    EXPECT_EQ(failure.completed(), CORBA::COMPLETED_NO);
  }
}

TEST(TmfAt, RaisesBadParamInAnEmptyList) {
  const NVSList_T pairs;
  EXPECT_THROW(topo::at(pairs, 0), CORBA::BAD_PARAM);
  EXPECT_THROW(topo::at(pairs, 0xFFFFFFFF), CORBA::BAD_PARAM);
}

TEST(TmfAt, RaisesBadParamBeyondAShrunkLength) {
  NodeList_T nodes = threeNodes();
  topo::setLength(nodes, 1);
  EXPECT_THROW(topo::at(nodes, 1), CORBA::BAD_PARAM);
}

TEST(TmfSetPair, WritesCopiesOfBothTexts) {
  NVSList_T pairs;
  topo::setLength(pairs, 1);
  std::string name = "Vendor";
  std::string value = "someone";
  topo::setPair(pairs, 0, name.c_str(), value);
  name.assign(name.size(), 'x');
  value.assign(value.size(), 'x');
  EXPECT_EQ(printed(pairs), "[Vendor=someone]");
}

TEST(TmfSetPair, ReplacesTheTextsOfThePair) {
  NVSList_T pairs = onePair("old", "old");
  topo::setPair(pairs, 0, "new", "");
  EXPECT_EQ(printed(pairs), "[new=]");
}

TEST(TmfSetPair, RaisesBadParamBeyondTheLength) {
  NVSList_T pairs = onePair("n", "v");
  EXPECT_THROW(topo::setPair(pairs, 1, "a", "b"), CORBA::BAD_PARAM);
  EXPECT_EQ(printed(pairs), "[n=v]");
}

// --- Moved records.

TEST(MovedRecord, TakesTheContentsOfANode) {
  Node_T from = someNode("A");
  auto to = topo::freshRecord<Node_T>();
  topo::moveRecord(from, to);
  expectSome(to, "A");
}

TEST(MovedRecord, MayBeMovedBack) {
  Node_T node = someNode("A");
  auto other = topo::freshRecord<Node_T>();
  topo::moveRecord(node, other);
  topo::moveRecord(other, node);
  expectSome(node, "A");
}

TEST(MovedRecord, TakesTheContentsOfALink) {
  TopologicalLink_T from = someLink("A");
  auto to = topo::freshRecord<TopologicalLink_T>();
  topo::moveRecord(from, to);
  expectSome(to, "A");
}

TEST(MovedRecord, RefersToABorrowedBufferWithoutOwningIt) {
  NVSList_T pair = onePair("Name", "A");
  auto from = topo::freshRecord<Node_T>();
  from.name.replace(1, 1, pair.get_buffer(false), false);
  {
    auto to = topo::freshRecord<Node_T>();
    topo::moveRecord(from, to);
    EXPECT_FALSE(to.name.release());
    EXPECT_EQ(printed(to.name), "[Name=A]");
  }
  EXPECT_EQ(printed(pair), "[Name=A]");
}

}  // namespace
