#include "agent/network/NetworkChecks.h"

#include <gtest/gtest.h>

#include <string>

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

}  // namespace
