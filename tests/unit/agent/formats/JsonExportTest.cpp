// Tests of exported networks: reading them gives the same network.

#include "agent/formats/JsonExport.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/unit/agent/support/NetworkFiles.h"

namespace {

using agent::Network;
using agent::writeJsonNetwork;

void expectRoundTrip(const Network& network) {
  const std::string text = writeJsonNetwork(network);
  const Network read = readText(text);
  EXPECT_EQ(network, read);
  EXPECT_EQ(text, writeJsonNetwork(read));
}

TEST(JsonExport, KeepsEveryField) {
  Network network = sampleNetwork();
  network.networkElements.push_back({77, "for a node", true, true});
  network.objectAttributes = {{{1, "NE=1", "owner", {{"a", "1"}, {"b", "2"}}}, {54, "x", "", {}}}};
  expectRoundTrip(network);
}

TEST(JsonExport, KeepsAnEmptyNetwork) {
  expectRoundTrip(Network());
  Network withList;
  withList.objectAttributes.emplace();
  expectRoundTrip(withList);
}

TEST(JsonExport, KeepsHostileTexts) {
  const std::string text =
      "\"\\/\b\f\n\r\t\x01\x1f\x7f </script> \xc3\xa4\xe2\x80\xa8\xf0\x9f\x98\x80{}[],:";
  Network network;
  network.ems = text;
  network.topoNodes = {nodeOf(text, "", NS_DOMAIN::kTopoSubnetwork, text)};
  network.topoNodes[0].extendedAttributes = {{text, text}, {text, ""}};
  network.networkElements = {{-2147483647 - 1, text}};
  network.clockPositions = {positionOf(text, text, -1, 2147483647)};
  network.clockLinks = {linkOf(text, text, text, text)};
  network.objectLabels = {{201, text, text}};
  network.objectAttributes = {{{201, text, text, {{text, text}}}}};
  expectRoundTrip(network);
}

TEST(JsonExport, KeepsALargeNetwork) {
  expectRoundTrip(wideNetwork(10000));
}

// The reason why a file with one entry of objectAttributes is refused.
std::string refusalOfObject(const std::string& fields) {
  return refusalOf(R"({"format":"topo-network/1","objectAttributes":[{)" + fields + "}]}");
}

TEST(ObjectAttributes, RejectIncompleteAndRepeatedPairs) {
  EXPECT_EQ("network.json: objectAttributes[0].info[0]: must have a name and a value",
            refusalOfObject(R"("id":"a","info":[["","v"]])"));
  EXPECT_EQ("network.json: objectAttributes[0].info[1]: must have a name and a value",
            refusalOfObject(R"("id":"a","info":[["n","v"],["m",""]])"));
  EXPECT_EQ("network.json: objectAttributes[0].info[1]: has a name that is given twice",
            refusalOfObject(R"("id":"a","info":[["n","v"],["n","w"]])"));
}

TEST(ObjectAttributes, RejectAnObjectTwice) {
  EXPECT_EQ("network.json: objectAttributes[1]: 1 \"a\" is already that of objectAttributes[0]",
            refusalOfObject(R"("type":1,"id":"a"},{"type":1,"id":"a")"));
}

TEST(ObjectAttributes, RejectMoreInformationThanASetterStores) {
  std::string pairs;
  const std::string value(std::size_t{1} << 20, 'x');
  for (int i = 0; i < 16; ++i) {
    pairs += (i == 0 ? "[\"" : ",[\"") + std::to_string(i) + "\",\"" + value + "\"]";
  }
  EXPECT_EQ("network.json: objectAttributes[0].info: has more than 16777216 bytes",
            refusalOfObject(R"("id":"a","info":[)" + pairs + "]"));
}

TEST(JsonExport, RefusesATextThatIsNotUtf8) {
  Network network;
  network.ems = "\xff";
  EXPECT_THROW(writeJsonNetwork(network), std::exception);
}

}  // namespace
