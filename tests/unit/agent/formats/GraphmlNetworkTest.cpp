// Networks in GraphML: the mapping, and the reason of each rejection.

#include <gtest/gtest.h>

#include <filesystem>
#include <set>

#include "agent/formats/NetworkReader.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/unit/agent/support/NetworkFiles.h"

namespace {

const std::string kKeys = R"(
  <key attr.name="label" attr.type="string" for="graph" id="g"/>
  <key attr.name="label" attr.type="string" for="node" id="l"/>
  <key attr.name="Country" attr.type="string" for="node" id="c"/>
  <key attr.name="Longitude" attr.type="double" for="node" id="x"/>
  <key attr.name="Latitude" attr.type="double" for="node" id="y"/>
  <key attr.name="LinkType" attr.type="string" for="edge" id="t"/>
  <key attr.name="label" attr.type="string" for="edge" id="el"/>)";

std::string graphml(const std::string& graph) {
  return R"(<?xml version="1.0" encoding="utf-8"?><graphml>)" + kKeys + graph + "</graphml>";
}

std::string graph(const std::string& content) {
  return graphml(R"(<graph edgedefault="undirected"><data key="g">G</data>)" + content +
                 "</graph>");
}

std::string refusalOfGraph(const std::string& content) {
  return refusalOf(graph(content), "net.graphml");
}

std::string refusalOfLongitude(const std::string& degrees) {
  return refusalOfGraph(R"(<node id="0"/><node id="1"><data key="x">)" + degrees +
                        "</data></node>");
}

TEST(GraphmlNetwork, BecomesSubnetworksElementsAndClockObjects) {
  agent::Network expected;
  expected.ems = "G";
  expected.topoNodes = {nodeOf("G", NS_DOMAIN::kPhysicalRoot, 2, "G"),
                        nodeOf("G/Norge", "G", 2, "Norge"),
                        nodeOf("G/Danmark", "G", 2, "Danmark"),
                        nodeOf("NE=1", "G/Norge", 1, "Oslo"),
                        nodeOf("NE=2", "G", 1, "Nowhere"),
                        nodeOf("NE=3", "G/Danmark", 1, "Ålborg"),
                        nodeOf("NE=4", "G/Norge", 1)};
  expected.topoNodes[3].attribute3 = 10746;
  expected.topoNodes[3].attribute4 = 59913;
  expected.topoNodes[5].attribute3 = -9919;
  expected.topoNodes[5].attribute4 = 57048;
  expected.networkElements = {
      {1, "Oslo", true}, {2, "Nowhere", true}, {3, "Ålborg", true}, {4, "", true}};
  expected.clockPositions = {positionOf("NE=1", "Oslo"), positionOf("NE=2", "Nowhere"),
                             positionOf("NE=3", "Ålborg"), positionOf("NE=4")};
  expected.clockLinks = {linkOf("e0", "OC-3/Oslo-Ålborg", "NE=1", "NE=3"),
                         linkOf("e1", "link/-Oslo", "NE=4", "NE=1"),
                         linkOf("e2", "link/Oslo-Oslo", "NE=1", "NE=1")};
  EXPECT_EQ(expected, readText(graph(R"(
    <edge source="n0" target="n2"><data key="t">OC-3</data></edge>
    <node id="n0"><data key="c">Norge</data><data key="l">Oslo</data>
      <data key="x">10.74609</data><data key="y">59.91273</data></node>
    <node id="n1"><data key="l">Nowhere</data><data key="c"></data></node>
    <node id="n2"><data key="c">Danmark</data><data key="l">&#xC5;lborg</data>
      <data key="x">-9.9187</data><data key="y"> 57.048 </data></node>
    <edge source="n3" target="n0"><data key="el">unused</data></edge>
    <node id="n3"><data key="c">Norge</data><data key="x"/></node>
    <edge source="n0" target="n0"/>)")));
}

TEST(GraphmlNetwork, WithoutALabelIsNamedAfterTheFile) {
  const auto expected = [](const std::string& name) {
    agent::Network network;
    network.ems = name;
    network.topoNodes = {nodeOf(name, NS_DOMAIN::kPhysicalRoot, 2, name)};
    return network;
  };
  EXPECT_EQ(expected("my.net"), readText(graphml("<graph/>"), "my.net.graphml"));
  EXPECT_EQ(expected("net"),
            readText(graphml(R"(<graph><data key="g"></data></graph>)"), "net.xml"));
}

TEST(GraphmlNetwork, RoundsHalvesOfAThousandthAwayFromZero) {
  const auto network = readText(graph(R"(
    <node id="a"><data key="x">0.0005</data><data key="y">-0.0005</data></node>
    <node id="b"><data key="x">0.000499</data><data key="y">-179.9999</data></node>)"));
  EXPECT_EQ(1, network.topoNodes[1].attribute3);
  EXPECT_EQ(-1, network.topoNodes[1].attribute4);
  EXPECT_EQ(0, network.topoNodes[2].attribute3);
  EXPECT_EQ(-180000, network.topoNodes[2].attribute4);
}

TEST(GraphmlNetwork, RoundsTheTextOfCoordinates) {
  const auto network = readText(graph(R"(
    <node id="a"><data key="x">32.3835</data><data key="y">-3.23835e1</data></node>)"));
  EXPECT_EQ(32384, network.topoNodes[1].attribute3);
  EXPECT_EQ(-32384, network.topoNodes[1].attribute4);
}

TEST(GraphmlNetwork, RoundsTheTextOfCoordinatesOfTheTopologyZoo) {
  const std::filesystem::path file = std::filesystem::path(TOPO_ZOO_DIR) / "UsCarrier.graphml";
  if (!std::filesystem::exists(file)) {
    GTEST_SKIP() << "no " << file;
  }
  std::multiset<std::int32_t> latitudes;
  for (const auto& node : valueOf(agent::readNetworkFile(file)).topoNodes) {
    latitudes.insert(node.attribute4);
  }
  EXPECT_EQ(1U, latitudes.count(32384));  // 32.3835 in the file
  EXPECT_EQ(0U, latitudes.count(32383));
}

TEST(GraphmlNetwork, FindsDataThroughTheDeclaredKeys) {
  const auto network = readText(R"(<graphml>
    <key id="d1" for="edge" attr.name="label"/><key id="d2" for="all" attr.name="label"/>
    <key id="d3" for="node" attr.name="Country"><default>Italia</default></key>
    <graph><data key="d2">G</data><node id="0"><data key="d1">not a node's</data>
    <data key="d2">a</data><data key="d2">second</data><data key="unknown">x</data></node></graph>
    </graphml>)");
  EXPECT_EQ("G", network.ems);
  EXPECT_EQ("NE=1", network.topoNodes[2].nodeId);
  EXPECT_EQ("a", network.topoNodes[2].nativeName);
  EXPECT_EQ("G/Italia", network.topoNodes[2].parentId);
}

TEST(GraphmlNetwork, JoinsTheTextOfDataAroundCommentsAndSections) {
  const auto network =
      readText(graph("<node id='0'><data key='l'>A&amp;<!-- x -->B<![CDATA[<C>]]></data></node>"));
  EXPECT_EQ("A&B<C>", network.topoNodes[1].nativeName);
}

TEST(GraphmlNetwork, RejectsContentThatIsNotXml) {
  EXPECT_EQ("net.graphml: 2:6: Start-end tags mismatch",
            refusalOf("<graphml>\n<a></b></graphml>", "net.graphml"));
}

TEST(GraphmlNetwork, RejectsATruncatedFile) {
  EXPECT_EQ("net.graphml: 1:16: Start-end tags mismatch",
            refusalOf("<graphml><graph>", "net.graphml"));
}

TEST(GraphmlNetwork, RejectsAnotherRootElement) {
  EXPECT_EQ(R"(net.graphml: root element: must be graphml, not "html")",
            refusalOf("<html><graph/></html>", "net.graphml"));
}

TEST(GraphmlNetwork, RejectsAFileWithoutAGraph) {
  EXPECT_EQ("net.graphml: graphml: must contain one graph, not 0",
            refusalOf(graphml(""), "net.graphml"));
}

TEST(GraphmlNetwork, RejectsSeveralGraphs) {
  EXPECT_EQ("net.graphml: graphml: must contain one graph, not 2",
            refusalOf(graphml("<graph/><graph/>"), "net.graphml"));
}

TEST(GraphmlNetwork, RejectsAGraphInsideANode) {
  EXPECT_EQ("net.graphml: node[0]: contains another graph, which is not supported",
            refusalOfGraph("<node id='0'><graph/></node>"));
}

TEST(GraphmlNetwork, RejectsANodeWithoutId) {
  EXPECT_EQ("net.graphml: node[1].id: is missing", refusalOfGraph("<node id='0'/><node/>"));
}

TEST(GraphmlNetwork, RejectsADuplicateNodeId) {
  EXPECT_EQ(R"(net.graphml: node[2].id: "0" is already that of node[0])",
            refusalOfGraph("<node id='0'/><node id='1'/><node id='0'/>"));
}

TEST(GraphmlNetwork, RejectsAnEdgeToAnUnknownNode) {
  EXPECT_EQ(R"(net.graphml: edge[0].target: "7" is no node of the graph)",
            refusalOfGraph("<node id='0'/><edge source='0' target='7'/>"));
  EXPECT_EQ("net.graphml: edge[1].source: is missing",
            refusalOfGraph("<node id='0'/><edge source='0' target='0'/><edge target='0'/>"));
}

TEST(GraphmlNetwork, RejectsCoordinatesThatAreNotNumbers) {
  EXPECT_EQ(
      R"(net.graphml: node[1].Longitude: "east" is not a number of degrees within the limits)",
      refusalOfLongitude("east"));
  EXPECT_EQ(
      R"(net.graphml: node[1].Longitude: "4.8N" is not a number of degrees within the limits)",
      refusalOfLongitude("4.8N"));
  EXPECT_EQ(R"(net.graphml: node[1].Longitude: "nan" is not a number of degrees within the limits)",
            refusalOfLongitude("nan"));
  EXPECT_EQ(
      R"(net.graphml: node[1].Longitude: "-inf" is not a number of degrees within the limits)",
      refusalOfLongitude("-inf"));
}

TEST(GraphmlNetwork, RejectsCoordinatesBeyond32Bits) {
  EXPECT_EQ(
      R"(net.graphml: node[1].Longitude: "2147484" is not a number of degrees within the limits)",
      refusalOfLongitude("2147484"));
  EXPECT_EQ(
      R"(net.graphml: node[1].Longitude: "1e999" is not a number of degrees within the limits)",
      refusalOfLongitude("1e999"));
  EXPECT_EQ(
      R"(net.graphml: node[0].Latitude: "-1e300" is not a number of degrees within the limits)",
      refusalOfGraph("<node id='0'><data key='y'>-1e300</data></node>"));
}

TEST(GraphmlNetwork, RejectsAReferenceToNul) {
  EXPECT_EQ("net.graphml: 1:24: contains a NUL character",
            refusalOf("<graphml><graph id='a'>&#0;</graph></graphml>", "net.graphml"));
  EXPECT_NE("", refusalOfGraph("<node id='0'><data key='l'>a&#x00;b</data></node>"));
}

TEST(GraphmlNetwork, RejectsAReferenceToAnInvalidCharacter) {
  EXPECT_EQ("net.graphml: node[0].label: is not UTF-8",
            refusalOfGraph("<node id='0'><data key='l'>&#xD800;</data></node>"));
}

TEST(GraphmlNetwork, RejectsAGraphWithTheNameOfARootMarker) {
  EXPECT_EQ(R"(0: graph.label: "0" cannot be the id of a subnetwork)",
            refusalOf(graphml("<graph/>"), "0"));
}

TEST(GraphmlNetwork, RejectsAGraphWithTheIdOfAnElement) {
  EXPECT_EQ(
      R"(net.graphml: graph.label: "NE=1" is also the id of an element)",
      refusalOf(graphml("<graph><data key='g'>NE=1</data><node id='0'/></graph>"), "net.graphml"));
}

// The file contains the text once, the network would contain the text for every node or edge.
TEST(GraphmlNetwork, RejectsALongTextRepeatedForEveryNode) {
  std::string nodes;
  for (int i = 0; i < 1000; ++i) {
    nodes += "<node id='" + std::to_string(i) + "'/>";
  }
  const std::string longText(100000, 'x');
  const std::string reason =
      ": repeats texts until they have more than 32 times the size of the file";
  for (const std::string key : {"label", "Country", "Longitude"}) {
    const std::string refusal =
        refusalOf("<graphml><key id='k' for='node' attr.name='" + key + "'><default>" +
                      (key == "Longitude" ? std::string(100000, '0') : longText) +
                      "</default></key><graph>" + nodes + "</graph></graphml>",
                  "net.graphml");
    EXPECT_EQ(reason, refusal.substr(refusal.find("]: ") + 1)) << key;
  }
  const std::string refusal = refusalOf(
      graphml("<graph><data key='g'>" + longText + "</data>" + nodes + "</graph>"), "net.graphml");
  EXPECT_EQ(reason, refusal.substr(refusal.find("]: ") + 1));
}

TEST(GraphmlNetwork, RejectsALongTextRepeatedForEveryEdge) {
  std::string edges;
  for (int i = 0; i < 1000; ++i) {
    edges += "<edge source='0' target='0'/>";
  }
  const std::string refusal = refusalOfGraph("<node id='0'><data key='l'>" +
                                             std::string(100000, 'x') + "</data></node>" + edges);
  EXPECT_EQ("net.graphml: edge[", refusal.substr(0, 18));
}

TEST(GraphmlNetwork, RejectsAFileNameThatIsNotUtf8) {
  EXPECT_EQ("\\xff.graphml: file name: is not UTF-8",
            refusalOf(graphml("<graph/>"), "\xff.graphml"));
}

// The number of occurrences of a tag.
std::size_t countOf(const std::string& tag, const std::string& text) {
  std::size_t count = 0;
  for (auto at = text.find(tag); at != std::string::npos; at = text.find(tag, at + 1)) {
    ++count;
  }
  return count;
}

TEST(GraphmlNetwork, OfTheTopologyZooHasOneNodeForGraphCountriesAndNodes) {
  const std::filesystem::path zoo = TOPO_ZOO_DIR;
  if (!std::filesystem::is_directory(zoo)) {
    GTEST_SKIP() << "no topology zoo at " << zoo;
  }
  std::size_t files = 0;
  for (const auto& entry : std::filesystem::directory_iterator(zoo)) {
    if (entry.path().extension() != ".graphml") {
      continue;
    }
    SCOPED_TRACE(entry.path().string());
    ++files;
    const std::string text = support::readFile(entry.path());
    const agent::Network network = valueOf(agent::readNetworkFile(entry.path()));
    std::set<std::string> ids;
    std::set<std::string> countries;
    for (const auto& node : network.topoNodes) {
      ids.insert(node.nodeId);
      if (node.nodeType == NS_DOMAIN::kTopoElement) {
        countries.insert(node.parentId);
      }
    }
    countries.erase(network.ems);
    EXPECT_EQ(entry.path().stem().string(), network.ems);
    EXPECT_EQ(network.topoNodes.size(), ids.size());
    EXPECT_EQ(1 + countries.size() + countOf("<node ", text), network.topoNodes.size());
    EXPECT_EQ(countOf("<node ", text), network.networkElements.size());
    EXPECT_EQ(countOf("<node ", text), network.clockPositions.size());
    EXPECT_EQ(countOf("<edge ", text), network.clockLinks.size());
  }
  EXPECT_EQ(10U, files);
}

}  // namespace
