// Compares the schema and the description of the native format with the reader.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <nlohmann/json.hpp>
#include <set>

#include "agent/formats/JsonNetwork.h"
#include "agent/formats/NetworkReader.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/unit/agent/support/NetworkFiles.h"

namespace {

using Json = nlohmann::json;

const std::filesystem::path kSource = TOPO_SOURCE_DIR;

Json schema() {
  return Json::parse(support::readFile(kSource / "docs" / "topo-network.schema.json"));
}

std::set<std::string> propertiesOf(const Json& object) {
  std::set<std::string> names;
  for (const auto& property : object.at("properties").items()) {
    names.insert(property.key());
  }
  return names;
}

agent::Network backbone() {
  return valueOf(agent::readNetworkFile(kSource / "networks" / "backbone.json"));
}

TEST(Schema, HasTheFieldsOfTheReader) {
  const Json whole = schema();
  for (const auto& [list, fields] : agent::jsonNetworkFields()) {
    const Json& object = list.empty() ? whole : whole.at("properties").at(list).at("items");
    EXPECT_EQ(std::set<std::string>(fields.begin(), fields.end()), propertiesOf(object)) << list;
    EXPECT_EQ(Json(false), object.at("additionalProperties")) << list;
  }
}

TEST(Schema, RequiresTheFieldsThatTheReaderRequires) {
  const Json whole = schema();
  const auto requiredOf = [&](const char* list) {
    return whole.at("properties").at(list).at("items").at("required");
  };
  EXPECT_EQ(Json({"format"}), whole.at("required"));
  EXPECT_EQ(Json({"id"}), requiredOf("topoNodes"));
  EXPECT_EQ(Json({"number"}), requiredOf("networkElements"));
  EXPECT_EQ(Json({"reference"}), requiredOf("clockPositions"));
  EXPECT_EQ(Json({"id"}), requiredOf("clockLinks"));
  EXPECT_EQ(Json({"id"}), requiredOf("objectLabels"));
  EXPECT_EQ(Json({"id"}), requiredOf("objectAttributes"));
}

TEST(Formats, DescribeEveryField) {
  const std::string text = support::readFile(kSource / "docs" / "formats.md");
  for (const auto& [list, fields] : agent::jsonNetworkFields()) {
    for (const std::string& field : fields) {
      EXPECT_NE(std::string::npos, text.find('`' + field + '`')) << list << ' ' << field;
    }
  }
}

TEST(Formats, HaveReadableExamples) {
  const std::string text = support::readFile(kSource / "docs" / "formats.md");
  const support::TemporaryDirectory directory;
  int examples = 0;
  for (const std::string fence : {"```json\n", "```xml\n"}) {
    for (auto at = text.find(fence); at != std::string::npos; at = text.find(fence, at + 1)) {
      const auto start = at + fence.size();
      const std::string example = text.substr(start, text.find("```", start) - start);
      EXPECT_EQ("", agent::readNetworkFile(directory.write("example", example)).outcome().reason);
      ++examples;
    }
  }
  EXPECT_EQ(2, examples);
}

TEST(Backbone, HasSubnetworksFourDeep) {
  const agent::Network network = backbone();
  std::map<std::string, int> depths;  // parents precede their children
  for (const auto& node : network.topoNodes) {
    if (node.nodeType == NS_DOMAIN::kTopoSubnetwork) {
      depths[node.nodeId] = depths[node.parentId] + 1;
    }
  }
  const auto deepest = std::max_element(depths.begin(), depths.end(),
                                        [](auto& a, auto& b) { return a.second < b.second; });
  EXPECT_EQ(4, deepest->second);
}

TEST(Backbone, HasElementsOfEveryClassAndBothKindsOfNetworkElements) {
  const agent::Network network = backbone();
  std::set<std::string> classes;
  for (const auto& node : network.topoNodes) {
    if (node.nodeType == NS_DOMAIN::kTopoElement) {
      classes.insert(node.nodeId.substr(0, node.nodeId.find('=')));
    }
  }
  EXPECT_EQ((std::set<std::string>{"NE", "ONE", "OS"}), classes);
  const auto shown = std::count_if(network.networkElements.begin(), network.networkElements.end(),
                                   [](const auto& element) { return element.shown; });
  EXPECT_EQ(31, shown);
  EXPECT_EQ(35U, network.networkElements.size());
}

TEST(Backbone, HasClockDataWithAStoredLabel) {
  const agent::Network network = backbone();
  EXPECT_EQ(10U, network.clockPositions.size());
  EXPECT_EQ(9U, network.clockLinks.size());
  ASSERT_EQ(1U, network.objectLabels.size());
  EXPECT_EQ(201, network.objectLabels[0].type);
  EXPECT_EQ(network.clockLinks[0].linkId, network.objectLabels[0].id);
}

}  // namespace
