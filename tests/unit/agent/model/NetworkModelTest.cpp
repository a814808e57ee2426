#include "agent/model/NetworkModel.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "tests/unit/agent/support/NetworkFiles.h"

namespace {

using agent::NetworkModel;

std::vector<std::int32_t> numbersOf(const std::vector<NS_DOMAIN::NEIndex>& indexes) {
  std::vector<std::int32_t> numbers;
  numbers.reserve(indexes.size());
  for (const auto& index : indexes) {
    numbers.push_back(index.number);
  }
  return numbers;
}

std::vector<std::int32_t> listed(const NetworkModel& model, bool onlyShown) {
  std::vector<NS_DOMAIN::NEIndex> indexes;
  model.appendNEIndexes(indexes, onlyShown);
  return numbersOf(indexes);
}

TEST(NetworkModel, IsEmptyWithoutANetwork) {
  const NetworkModel model;
  EXPECT_EQ("", model.ems());
  EXPECT_EQ(0U, model.topoNodeCount());
  EXPECT_TRUE(model.clockPositions().empty());
  EXPECT_TRUE(model.clockLinks().empty());
}

// Each piece has one record.
class NetworkInPieces final : public agent::NetworkSource {
 public:
  explicit NetworkInPieces(const agent::Network& network) : sizes_{1, 2, 1, 2} {
    pieces_.emplace_back().ems = network.ems;
    split(network, &agent::Network::topoNodes);
    split(network, &agent::Network::networkElements);
    split(network, &agent::Network::clockPositions);
    split(network, &agent::Network::clockLinks);
    split(network, &agent::Network::objectLabels);
  }

  agent::NetworkSizes sizes() const override { return sizes_; }
  std::optional<agent::Network> next() override {
    return next_ == pieces_.size() ? std::nullopt : std::optional(pieces_[next_++]);
  }

 private:
  template <typename List>
  void split(const agent::Network& network, List agent::Network::*list) {
    for (const auto& record : network.*list) {
      (pieces_.emplace_back().*list).push_back(record);
    }
  }

  const agent::NetworkSizes sizes_;
  std::vector<agent::Network> pieces_;
  std::size_t next_ = 0;
};

TEST(NetworkModel, IsTheSameFromPieces) {
  NetworkInPieces pieces(sampleNetwork());
  const NetworkModel fromPieces(pieces);
  const NetworkModel whole(sampleNetwork());
  const agent::Network network = sampleNetwork();
  EXPECT_EQ(whole.ems(), fromPieces.ems());
  std::vector<NS_DOMAIN::TopoNode_T> nodes;
  fromPieces.appendTopoNodes(nodes);
  EXPECT_EQ(network.topoNodes, nodes);
  EXPECT_EQ(listed(whole, true), listed(fromPieces, true));
  EXPECT_EQ(listed(whole, false), listed(fromPieces, false));
  EXPECT_EQ(network.clockPositions, fromPieces.clockPositions());
  EXPECT_EQ(network.clockLinks, fromPieces.clockLinks());
  for (const agent::ObjectLabel& label : network.objectLabels) {
    EXPECT_EQ(label.label, fromPieces.labelOf(label.type, label.id));
  }
  for (const agent::NetworkElement& element : network.networkElements) {
    const agent::ObjectKey key{agent::kManagedElementType, std::to_string(element.number)};
    EXPECT_EQ(whole.object(key).has_value(), fromPieces.object(key).has_value());
    if (const auto view = whole.object(key)) {
      EXPECT_EQ(view->nodes, fromPieces.object(key)->nodes);
      EXPECT_EQ(view->positions, fromPieces.object(key)->positions);
      EXPECT_EQ(view->element.has_value(), fromPieces.object(key)->element.has_value());
    }
  }
}

TEST(NetworkModel, AppendsTheNodesInTheirOrder) {
  const NetworkModel model(sampleNetwork());
  std::vector<NS_DOMAIN::TopoNode_T> nodes(1);
  model.appendTopoNodes(nodes);
  ASSERT_EQ(5U, nodes.size());
  EXPECT_EQ("", nodes[0].nodeId);
  EXPECT_EQ("root", nodes[1].nodeId);
  EXPECT_EQ("Hall4||3", nodes[1].extendedAttributes.front().second);
  EXPECT_EQ("a", nodes[4].nodeId);
  EXPECT_EQ(4U, model.topoNodeCount());
}

// The numbers of the elements are in the order of the nodes, with gaps, or in any order.
TEST(NetworkModel, FindsTheNodeOfEveryElementInAnyOrder) {
  agent::Network network;
  for (const char* id : {"group", "NE=1", "NE=2", "group-2", "NE=3", "NE=4", "NE=5", "NE=6"}) {
    NS_DOMAIN::TopoNode_T& node = network.topoNodes.emplace_back();
    node.nodeId = id;
    node.nodeType =
        node.nodeId.front() == 'N' ? NS_DOMAIN::kTopoElement : NS_DOMAIN::kTopoSubnetwork;
  }
  const std::vector<std::int32_t> numbers = {1, 99, 3, 98, 2, 6, 5};
  for (const std::int32_t number : numbers) {
    network.networkElements.push_back({number, std::to_string(number), false, false});
  }
  const NetworkModel model(network);
  for (const std::int32_t number : numbers) {
    const auto object = model.object(agent::keyOf({agent::kManagedElementType, number}));
    ASSERT_TRUE(object && object->element) << number;
    EXPECT_EQ(number, object->element->number);
    EXPECT_EQ(number < 90 ? 1U : 0U, object->nodes.size()) << number;
  }
  EXPECT_FALSE(model.object(agent::keyOf({agent::kManagedElementType, 4}))->element);
}

TEST(NetworkModel, FindsNoNodeOfAnotherClassWithTheNumberOfAnElement) {
  agent::Network network;
  for (const char* id : {"OS=1", "NE=1"}) {
    NS_DOMAIN::TopoNode_T& node = network.topoNodes.emplace_back();
    node.nodeId = id;
    node.nodeType = NS_DOMAIN::kTopoElement;
  }
  network.networkElements.push_back({1, "one", false, false});
  const NetworkModel model(network);
  const auto object = model.object(agent::keyOf({agent::kManagedElementType, 1}));
  ASSERT_TRUE(object && object->element);
  EXPECT_EQ(1U, object->nodes.size());
}

TEST(NetworkModel, ListsAllElementsOrTheShownOnes) {
  const NetworkModel model(sampleNetwork());
  EXPECT_EQ((std::vector<std::int32_t>{7, -5, 6}), listed(model, false));
  EXPECT_EQ((std::vector<std::int32_t>{-5, 6}), listed(model, true));
}

class ListedElements : public testing::Test {
 protected:
  using Numbers = std::vector<std::int32_t>;

  void apply(agent::PreparedChange change) { model_.apply(change); }

  void expectListed(const Numbers& all, const Numbers& shown) const {
    EXPECT_EQ(all, listed(model_, false));
    EXPECT_EQ(shown, listed(model_, true));
  }

  static agent::Network withElements(const Numbers& numbers) {
    agent::Network network;
    for (const std::int32_t number : numbers) {
      network.networkElements.push_back({number, std::to_string(number), false, false});
    }
    return network;
  }

  static agent::Network withNode(const std::string& id) {
    agent::Network network;
    NS_DOMAIN::TopoNode_T& node = network.topoNodes.emplace_back();
    node.nodeId = id;
    node.nodeType = NS_DOMAIN::kTopoElement;
    return network;
  }

  NetworkModel model_{withElements({4, 1, 5, 2, 3})};
};

TEST_F(ListedElements, KeepTheirOrderWhenElementsAreRemoved) {
  apply(model_.prepareElementRemoval(1));
  expectListed({4, 5, 2, 3}, {});
  apply(model_.prepareElementRemoval(4));
  apply(model_.prepareElementRemoval(3));
  expectListed({5, 2}, {});
  apply(model_.prepareAddition(withElements({9, 8})));
  expectListed({5, 2, 9, 8}, {});
  apply(model_.prepareAddition(withNode("NE=8")));
  apply(model_.prepareAddition(withNode("NE=2")));
  expectListed({5, 2, 9, 8}, {2, 8});
  apply(model_.prepareElementRemoval(5));
  apply(model_.prepareElementRemoval(2));
  apply(model_.prepareElementRemoval(9));
  expectListed({8}, {8});
  apply(model_.prepareElementRemoval(8));
  expectListed({}, {});
  apply(model_.prepareAddition(withElements({7})));
  expectListed({7}, {});
}

TEST_F(ListedElements, AreShownWhileTheyHaveANode) {
  apply(model_.prepareAddition(withNode("NE=5")));
  expectListed({4, 1, 5, 2, 3}, {5});
  apply(model_.prepareRemoval("NE=5"));
  expectListed({4, 1, 5, 2, 3}, {});
  agent::Network both = withNode("NE=6");
  both.networkElements = withElements({6}).networkElements;
  apply(model_.prepareAddition(both));
  expectListed({4, 1, 5, 2, 3, 6}, {6});
}

TEST_F(ListedElements, HaveTheMarkOfTheirLatestRecord) {
  apply(model_.prepareUpdate(agent::NetworkElement{2, "two", true, false}));
  expectListed({4, 1, 5, 2, 3}, {2});
  apply(model_.prepareUpdate(agent::NetworkElement{2, "two", false, false}));
  expectListed({4, 1, 5, 2, 3}, {});
  apply(model_.prepareReplacement(withElements({3, 2})));
  apply(model_.prepareUpdate(agent::NetworkElement{2, "two", true, false}));
  expectListed({3, 2}, {2});
}

TEST(NetworkModel, ReturnsKnownElementsInTheOrderOfTheIndexes) {
  const NetworkModel model(sampleNetwork());
  std::vector<NS_DOMAIN::NE_T> elements;
  model.appendNEs(elements, {{0, 6}, {0, 99}, {3, 7}, {0, 6}});
  ASSERT_EQ(3U, elements.size());
  EXPECT_EQ("six", elements[0].name);
  EXPECT_EQ(7, elements[1].number);
  EXPECT_EQ(3, elements[1].first);
  EXPECT_EQ("seven", elements[1].name);
  EXPECT_EQ(6, elements[2].number);
}

TEST(NetworkModel, FindsSubnetworksOnlyAmongSubnetworks) {
  const NetworkModel model(sampleNetwork());
  EXPECT_TRUE(model.hasTopoSubnetwork("root"));
  EXPECT_FALSE(model.hasTopoSubnetwork("NE=5"));  // an element
  EXPECT_FALSE(model.hasTopoSubnetwork("b\nb"));  // of another type
  EXPECT_FALSE(model.hasTopoSubnetwork("QNMAP_PHY_SUBMAP"));
  EXPECT_FALSE(model.hasTopoSubnetwork(""));
}

TEST(NetworkModel, FindsLabelsByTypeAndId) {
  const NetworkModel model(sampleNetwork());
  EXPECT_EQ("stored", model.labelOf(201, "z"));
  EXPECT_EQ("", model.labelOf(-1, "z"));
  EXPECT_EQ("", model.labelOf(200, "z"));
  EXPECT_EQ("", model.labelOf(201, "a"));
}

TEST(NetworkModel, ServesClockObjectsInTheirOrder) {
  const NetworkModel model(sampleNetwork());
  ASSERT_EQ(2U, model.clockPositions().size());
  EXPECT_EQ("NE=7", model.clockPositions()[0].reference);
  ASSERT_EQ(2U, model.clockLinks().size());
  EXPECT_EQ("z", model.clockLinks()[0].linkId);
  EXPECT_EQ("a", model.clockLinks()[1].linkId);
}

TEST(NetworkModel, AppliesAChangeAtomically) {
  NetworkModel model(wideNetwork(10));
  std::atomic<bool> stop{false};
  std::atomic<int> wrong{0};
  const auto read = [&] {
    while (!stop) {
      std::vector<NS_DOMAIN::TopoNode_T> nodes;
      model.appendTopoNodes(nodes);
      wrong += nodes.size() != 10 && nodes.size() != 20 ? 1 : 0;
    }
  };
  std::vector<std::thread> readers;
  readers.reserve(3);
  for (int i = 0; i < 3; ++i) {
    readers.emplace_back(read);
  }
  agent::Network tree = wideNetwork(10);
  for (NS_DOMAIN::TopoNode_T& node : tree.topoNodes) {
    node.nodeId.insert(0, "more ");
    node.parentId.insert(0, node.parentId.empty() ? "" : "more ");
  }
  for (int i = 0; i < 25; ++i) {
    agent::PreparedChange addition = model.prepareAddition(tree);
    model.apply(addition);
    agent::PreparedChange removal = model.prepareRemoval("more node 0");
    model.apply(removal);
  }
  stop = true;
  for (std::thread& reader : readers) {
    reader.join();
  }
  EXPECT_EQ(0, wrong);
}

TEST(NetworkModel, FindsTheRecordsOfEveryList) {
  const NetworkModel model(sampleNetwork());
  EXPECT_TRUE(model.hasTopoNode("b\nb"));
  EXPECT_FALSE(model.hasTopoNode("none"));
  EXPECT_TRUE(model.hasNetworkElement(-5));
  EXPECT_FALSE(model.hasNetworkElement(5));
  EXPECT_TRUE(model.hasClockPosition(""));
  EXPECT_FALSE(model.hasClockPosition("NE=6"));
  EXPECT_TRUE(model.hasClockLink("z"));
  EXPECT_FALSE(model.hasClockLink("x"));
  EXPECT_TRUE(model.hasLabel({-1, "z"}));  // an empty one
  EXPECT_FALSE(model.hasLabel({200, "z"}));
}

TEST(NetworkModel, HidesPreparedChangesFromReaders) {
  NetworkModel model(wideNetwork(3));
  model.prepareAddition(sampleNetwork());
  model.prepareRemoval("node 0");
  model.prepareRenaming({54, "node 1"}, "x");
  model.prepareNodeRenaming("node 1", "x");
  NetworkModel::prepareLabel({54, "node 1"}, "x");
  EXPECT_EQ(3U, model.topoNodeCount());
  EXPECT_FALSE(model.hasTopoNode("root"));
  EXPECT_EQ("", model.labelOf(54, "node 1"));
}

}  // namespace
