// Estimates of the memory of views. The integration tests compare the estimates with the module.

#include "agent/northbound/ViewSizes.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "platform/agent/CorbaUtilInterface.h"

namespace {

using agent::Network;
using agent::NetworkModel;
using agent::ViewKind;
using agent::ViewSize;
using agent::ViewSizes;

NS_DOMAIN::TopoNode_T node(const std::string& id, const std::string& name) {
  NS_DOMAIN::TopoNode_T made;
  made.nodeId = id;
  made.nativeName = name;
  made.nodeType = NS_DOMAIN::kTopoSubnetwork;
  return made;
}

NS_DOMAIN::ClockTopoLinkInfo_T link(const std::string& id, const std::string& name) {
  NS_DOMAIN::ClockTopoLinkInfo_T made;
  made.linkId = id;
  made.nativeName = name;
  return made;
}

TEST(ViewSizes, AreZeroWithoutRecords) {
  const NetworkModel model;
  ViewSizes sizes(model, "EMS");
  for (const ViewKind kind : {ViewKind::kNodes, ViewKind::kClockPositions, ViewKind::kClockLinks}) {
    const ViewSize size = sizes.of(kind, true);
    EXPECT_EQ(0U, size.records);
    EXPECT_EQ(0U, size.result);
    EXPECT_EQ(0U, size.work);
    EXPECT_EQ(0U, size.of(5));
  }
}

TEST(ViewSizes, CountNodesAndElementsWithoutANode) {
  Network network;
  network.topoNodes = {node("1", "a"), node("2", "b")};
  network.networkElements = {{1, "one", false, false}, {2, "two", true, false}};
  const NetworkModel model(std::move(network));
  ViewSizes sizes(model, "EMS");
  EXPECT_EQ(3U, sizes.of(ViewKind::kNodes, false).records);
}

// The comments name the record that the view leaves out.
TEST(ViewSizes, CountTheRecordsOfTheTopologyView) {
  Network network;
  network.topoNodes = {node("1", "a"),    node("2", "b"),   node("0", ""), node("3", ""),
                       node("NE=-5", ""), node("NE=7", ""), node("4", ""), node("5", "")};
  network.topoNodes[3].nodeType = 3;                        // neither element nor subnetwork
  network.topoNodes[4].nodeType = NS_DOMAIN::kTopoElement;  // a negative number
  network.topoNodes[5].nodeType = NS_DOMAIN::kTopoElement;
  network.topoNodes[6].parentId = "NE=-5";  // a parent without a name
  network.topoNodes[6].parentType = NS_DOMAIN::kTopoElement;
  network.topoNodes[7].parentId = "NE=7";
  network.topoNodes[7].parentType = NS_DOMAIN::kTopoElement;
  network.networkElements = {{0, "zero", false, false},    // the number 0
                             {-1, "minus", false, false},  // a negative number
                             {8, "eight", false, false},
                             {7, "seven", true, false}};  // shown as a node
  const NetworkModel model(std::move(network));
  ViewSizes sizes(model, "EMS");
  EXPECT_EQ(4U, sizes.topologyRecords(true));
  EXPECT_EQ(5U, sizes.topologyRecords(false));
}

TEST(ViewSizes, CountEveryTextOfARecord) {
  const std::string text(1000, 'x');
  Network shortTexts;
  shortTexts.topoNodes = {node("1", "a")};
  shortTexts.networkElements = {{1, "", false, false}};
  shortTexts.clockPositions.resize(1);
  shortTexts.clockLinks = {link("1", "a")};
  Network longTexts = shortTexts;
  longTexts.topoNodes[0].nativeName += text;
  longTexts.topoNodes[0].parentId += text;
  longTexts.topoNodes[0].extendedAttributes = {{"place", text}};
  longTexts.networkElements[0].name += text;
  longTexts.clockPositions[0].label += text;
  longTexts.clockLinks[0].linkId += text;
  longTexts.objectLabels = {
      {NS_CORBA::CorbaUtilInterface::kClockTopoLinkType, longTexts.clockLinks[0].linkId, text}};
  const NetworkModel small(std::move(shortTexts));
  const NetworkModel large(std::move(longTexts));
  ViewSizes smallSizes(small, "EMS");
  ViewSizes largeSizes(large, "EMS");
  const auto difference = [&](ViewKind kind) {
    return largeSizes.of(kind, false).result - smallSizes.of(kind, false).result;
  };
  EXPECT_LE(4000U, difference(ViewKind::kNodes));
  EXPECT_LE(1000U, difference(ViewKind::kClockPositions));
  EXPECT_LE(2000U, difference(ViewKind::kClockLinks));
}

TEST(ViewSizes, CountTheEmsNameInEveryName) {
  Network network;
  network.topoNodes = {node("1", "a"), node("2", "b")};
  const NetworkModel model(std::move(network));
  ViewSizes plain(model, "");
  ViewSizes named(model, std::string(1000, 'x'));
  EXPECT_EQ(4000U,
            named.of(ViewKind::kNodes, false).result - plain.of(ViewKind::kNodes, false).result);
}

TEST(ViewSizes, AreLargerWithTheTestSwitchOn) {
  Network network;
  network.topoNodes = {node("1", "a")};
  const NetworkModel model(std::move(network));
  ViewSizes sizes(model, "EMS");
  EXPECT_LT(sizes.of(ViewKind::kNodes, false).result, sizes.of(ViewKind::kNodes, true).result);
}

TEST(ViewSizes, FollowTheChangesOfTheNetwork) {
  NetworkModel model;
  ViewSizes sizes(model, "EMS");
  EXPECT_EQ(0U, sizes.of(ViewKind::kNodes, false).records);
  Network network;
  network.topoNodes = {node("1", "a")};
  agent::PreparedChange addition = model.prepareAddition(std::move(network));
  model.apply(addition);
  const ViewSize one = sizes.of(ViewKind::kNodes, false);
  EXPECT_EQ(1U, one.records);
  agent::PreparedChange renaming = model.prepareNodeRenaming("1", std::string(1000, 'x'));
  model.apply(renaming);
  EXPECT_LT(one.result + 900, sizes.of(ViewKind::kNodes, false).result);
  agent::PreparedChange removal = model.prepareRemoval("1");
  model.apply(removal);
  EXPECT_EQ(0U, sizes.of(ViewKind::kNodes, false).records);
}

TEST(ViewSizes, AverageTheSizeOfTheRecords) {
  const ViewSize size{10, 5000, 0};
  EXPECT_EQ(0U, size.of(0));
  EXPECT_LE(1500U, size.of(3));
  EXPECT_GE(1510U, size.of(3));
}

}  // namespace
