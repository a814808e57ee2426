#include "agent/network/NetworkChecks.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/NoThreads.h"

namespace {

// Enough nodes for a check on another thread.
agent::Network largeNetwork() {
  agent::Network network;
  for (int i = 0; i < 10000; ++i) {
    NS_DOMAIN::TopoNode_T& node = network.topoNodes.emplace_back();
    node.nodeId = "node-" + std::to_string(i);
    node.nodeType = NS_DOMAIN::kTopoSubnetwork;
    network.networkElements.push_back({i, "", false, false});
  }
  return network;
}

TEST(NetworkChecks, AcceptsALargeNetwork) {
  EXPECT_TRUE(agent::checkNetwork(largeNetwork()).ok());
}

TEST(NetworkChecks, ReportsTheNodesOfALargeNetworkBeforeItsElements) {
  agent::Network network = largeNetwork();
  network.networkElements.back().number = 0;
  EXPECT_EQ("networkElements[9999].number: 0 is already that of networkElements[0]",
            agent::checkNetwork(network).reason);
  network.topoNodes[5].parentId = "node-5";
  EXPECT_EQ("topoNodes[5].parent: makes the node its own ancestor",
            agent::checkNetwork(network).reason);
}

TEST(NetworkChecks, FindsTheSharedIdOfTheFirstAndTheLastNodeOfALargeNetwork) {
  agent::Network network = largeNetwork();
  network.topoNodes.push_back(network.topoNodes.front());
  EXPECT_EQ("topoNodes[10000].id: \"node-0\" is already that of topoNodes[0]",
            agent::checkNetwork(network).reason);
}

TEST(NetworkChecks, AcceptsAParentElsewhereInALargePartOnly) {
  agent::Network network = largeNetwork();
  network.topoNodes[7].parentId = "elsewhere";
  EXPECT_TRUE(agent::checkPart(network).ok());
  EXPECT_EQ("topoNodes[7].parent: \"elsewhere\" does not exist",
            agent::checkNetwork(network).reason);
}

TEST(NetworkChecks, CheckTheNodesOfALargeNetworkWithoutAnotherThread) {
  agent::Network network = largeNetwork();
  network.topoNodes[5].parentId = "node-5";
  const support::NoThreads noThreads;
  EXPECT_EQ("topoNodes[5].parent: makes the node its own ancestor",
            agent::checkNetwork(network).reason);
}

TEST(NetworkChecks, ReportTheFirstListWithAProblemAndEveryListAfterALargeNetwork) {
  agent::Network network = largeNetwork();
  network.objectLabels = {{1, "id", "a"}, {1, "id", "b"}};
  EXPECT_EQ("objectLabels[1]: 1 \"id\" is already that of objectLabels[0]",
            agent::checkNetwork(network).reason);
  network.clockLinks.resize(2);
  EXPECT_EQ("clockLinks[1].id: \"\" is already that of clockLinks[0]",
            agent::checkNetwork(network).reason);
}

}  // namespace
