// Keys that collide in the standard library's hash tables cost as little as other keys.

#include <gtest/gtest.h>

#include "agent/base/FailureCodes.h"
#include "agent/formats/NetworkReader.h"
#include "agent/network/NetworkChecks.h"
#include "tests/support/CollidingKeys.h"
#include "tests/support/Pairs.h"
#include "tests/unit/agent/changes/ChangingHost.h"

namespace {

using agent::Network;

constexpr std::size_t kTexts = 2000;
constexpr std::size_t kManyTexts = 8000;

// The cost of an import and of the load at the next start, which builds all tables.
double costOfImport(const Network& network) {
  return support::costOf([&] {
    ChangingHost host(agent::SqliteStore::kInMemory);
    agent::ImportSummary summary;
    const agent::Outcome outcome = host.nodes().import(network, summary);
    EXPECT_EQ(agent::kSuccess, outcome.code) << outcome.reason;
    EXPECT_EQ(network.topoNodes.size(), agent::NetworkModel(host.store().read()).topoNodeCount());
  });
}

template <typename Keys, typename MakeNetwork>
void expectComparableImports(const Keys& hostile, const Keys& ordinary, MakeNetwork networkOf) {
  const double usual = costOfImport(networkOf(ordinary));
  const double cost = costOfImport(networkOf(hostile));
  EXPECT_PRED2(support::isComparable, cost, usual);
}

template <typename MakeNetwork>
void expectComparableImportsOfTexts(MakeNetwork networkOf) {
  expectComparableImports(support::collidingTexts(kTexts), support::ordinaryTexts(kTexts),
                          networkOf);
}

std::vector<std::int32_t> ordinaryNumbers() {
  std::vector<std::int32_t> numbers;
  for (std::size_t i = 0; i < support::kCollidingNumbers; ++i) {
    numbers.push_back(static_cast<std::int32_t>(i + 1000000000));
  }
  return numbers;
}

Network networkOfElements(const std::vector<std::int32_t>& numbers) {
  Network network;
  for (const std::int32_t number : numbers) {
    network.networkElements.push_back({number, "an element", false});
    network.topoNodes.push_back(
        nodeOf("NE=" + std::to_string(number), "", NS_DOMAIN::kTopoElement));
  }
  return network;
}

TEST(CollidingKeys, OfElementsDoNotSlowAnImport) {
  expectComparableImports(support::collidingNumbers(), ordinaryNumbers(), networkOfElements);
}

TEST(CollidingKeys, OfNodesDoNotSlowAnImport) {
  expectComparableImportsOfTexts([](const std::vector<std::string>& ids) {
    Network network;
    for (const std::string& id : ids) {
      network.topoNodes.push_back(nodeOf(id, network.topoNodes.empty() ? "" : ids[0]));
    }
    return network;
  });
}

TEST(CollidingKeys, OfClockPositionsDoNotSlowAnImport) {
  expectComparableImportsOfTexts([](const std::vector<std::string>& references) {
    Network network;
    for (const std::string& reference : references) {
      network.clockPositions.emplace_back().reference = reference;
    }
    return network;
  });
}

TEST(CollidingKeys, OfClockLinksDoNotSlowAnImport) {
  expectComparableImportsOfTexts([](const std::vector<std::string>& ids) {
    Network network;
    for (const std::string& id : ids) {
      network.clockLinks.emplace_back().linkId = id;
    }
    return network;
  });
}

TEST(CollidingKeys, OfLabelsDoNotSlowACheck) {
  const auto cost = [](const std::vector<std::string>& ids) {
    Network network;
    for (const std::string& id : ids) {
      network.objectLabels.push_back({1, id, "a label"});
    }
    return support::costOf([&] { EXPECT_TRUE(agent::checkNetwork(network).ok()); });
  };
  const double usual = cost(support::ordinaryTexts(kManyTexts));
  EXPECT_PRED2(support::isComparable, cost(support::collidingTexts(kManyTexts)), usual);
}

TEST(CollidingKeys, OfAdditionalInformationDoNotSlowAMerge) {
  const auto cost = [](const std::vector<std::string>& names) {
    ChangingHost host(agent::SqliteStore::kInMemory);
    EXPECT_TRUE(host.nodes().create(nodeOf("a", "")).ok());
    Pairs pairs;
    for (const std::string& name : names) {
      pairs.emplace_back(name, "");
    }
    globaldefs::NVSList_T list = nameOf(pairs);
    return support::costOf([&] {
      const auto outcome = host.attributes().setAdditionalInfo(
          nameOf({{"EMS", "E"}, {"TopoSubnetwork", "a"}}), list);
      EXPECT_EQ(agent::kSuccess, outcome.code) << outcome.reason;
    });
  };
  const double usual = cost(support::ordinaryTexts(kManyTexts));
  EXPECT_PRED2(support::isComparable, cost(support::collidingTexts(kManyTexts)), usual);
}

double costOfGraphml(const std::string& text) {
  return support::costOf([&] { EXPECT_TRUE(agent::readNetwork("net.graphml", text).ok()); });
}

std::string graphmlOf(const std::vector<std::string>& texts) {
  std::string keys;
  std::string nodes;
  for (const std::string& text : texts) {
    keys += "<key id='" + text + "' for='node' attr.name='label'/>";
    nodes += "<node id='" + text + "'><data key='" + text + "'/><data key='c'>" + text +
             "</data></node>";
  }
  return "<graphml><key id='c' for='node' attr.name='Country'/>" + keys +
         "<graph edgedefault='directed'>" + nodes + "</graph></graphml>";
}

TEST(CollidingKeys, OfGraphmlDoNotSlowTheReader) {
  const double usual = costOfGraphml(graphmlOf(support::ordinaryTexts(kManyTexts)));
  EXPECT_PRED2(support::isComparable, costOfGraphml(graphmlOf(support::collidingTexts(kManyTexts))),
               usual);
}

// The data uses none of the declared keys.
TEST(GraphmlKeys, DoNotSlowTheSearchForData) {
  const auto graphml = [](std::size_t keys, std::size_t data) {
    std::string text = "<graphml>";
    for (std::size_t i = 0; i < keys; ++i) {
      text += "<key id='k" + std::to_string(i) + "' for='node' attr.name='label'/>";
    }
    text += "<graph><node id='0'>";
    for (std::size_t i = 0; i < data; ++i) {
      text += "<data key='other'/>";
    }
    return text + "</node></graph></graphml>";
  };
  const double usual = costOfGraphml(graphml(1, 5000)) + costOfGraphml(graphml(5000, 1));
  EXPECT_PRED2(support::isComparable, costOfGraphml(graphml(5000, 5000)), usual);
}

}  // namespace
