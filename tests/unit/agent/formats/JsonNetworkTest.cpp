// The native network format: valid content, and the reason of each rejection.

#include <gtest/gtest.h>

#include "tests/unit/agent/support/NetworkFiles.h"

namespace {

using agent::Network;

std::string refusalOfNodes(const std::string& nodes) {
  return refusalOf(withFormat(R"("topoNodes":[)" + nodes + ']'));
}

TEST(JsonNetwork, ReadsEveryField) {
  Network expected;
  expected.ems = "E";
  expected.topoNodes = {nodeOf("S", "0", 7, "name S"), nodeOf("NE=3", "S", 1, "three")};
  expected.topoNodes[0].parentType = 4294967295;
  expected.topoNodes[0].attribute3 = -5;
  expected.topoNodes[0].attribute4 = 6;
  expected.topoNodes[0].extendedAttributes = {{"location", "Hall4||3"}, {"second", ""}};
  expected.networkElements = {{3, "three", true}};
  expected.clockPositions = {positionOf("NE=3", "label", -1, 1)};
  expected.clockLinks = {linkOf("L", "SDH/x", "NE=3", "NE=4")};
  expected.objectLabels = {{201, "L", "stored"}};
  EXPECT_EQ(expected, readText(withFormat(R"(
    "ems": "E",
    "topoNodes": [
      {"id": "S", "parent": "0", "name": "name S", "type": 7, "parentType": 4294967295,
       "params": [-5, 6], "attributes": [["location", "Hall4||3"], ["second", ""]]},
      {"id": "NE=3", "parent": "S", "name": "three", "type": 1}],
    "networkElements": [{"number": 3, "name": "three", "shown": true}],
    "clockPositions": [{"reference": "NE=3", "label": "label", "values": [-1, 1]}],
    "clockLinks": [{"id": "L", "name": "SDH/x", "a": "NE=3", "z": "NE=4"}],
    "objectLabels": [{"type": 201, "id": "L", "label": "stored"}])")));
}

TEST(JsonNetwork, GivesMissingFieldsTheirDefaults) {
  Network expected;
  expected.topoNodes = {nodeOf("S", "")};
  expected.networkElements = {{3, ""}};
  expected.clockPositions = {positionOf("P")};
  expected.clockLinks = {linkOf("L")};
  expected.objectLabels = {{0, "O", ""}};
  EXPECT_EQ(expected, readText(withFormat(R"(
    "topoNodes": [{"id": "S"}], "networkElements": [{"number": 3}],
    "clockPositions": [{"reference": "P"}], "clockLinks": [{"id": "L"}],
    "objectLabels": [{"id": "O"}])")));
}

TEST(JsonNetwork, MayContainTheFormatOnly) {
  EXPECT_EQ(Network(), readText(R"({"format":"topo-network/1"})"));
}

TEST(JsonNetwork, MayNameItsFormatLast) {
  Network expected;
  expected.ems = "E";
  expected.networkElements = {{1, ""}};
  EXPECT_EQ(expected, readText(R"({"ems":"E",
    "networkElements":[{"number":1}],"format":"topo-network/1"})"));
}

TEST(JsonNetwork, MayStartWithAByteOrderMarkAndBlanks) {
  EXPECT_EQ(Network(), readText("\xef\xbb\xbf \r\n\t{\"format\":\"topo-network/1\"}"));
}

TEST(JsonNetwork, IsRecognisedByItsContent) {
  EXPECT_EQ(Network(), readText(R"({"format":"topo-network/1"})", "network.graphml"));
}

TEST(JsonNetwork, AcceptsEveryRootMarkerAsAParent) {
  EXPECT_EQ("", refusalOfNodes(R"({"id":"a","parent":""},{"id":"b","parent":"0"},
    {"id":"c","parent":"QNMAP_PHY_SUBMAP"})"));
}

TEST(JsonNetwork, AcceptsAParentAfterItsChild) {
  EXPECT_EQ("", refusalOfNodes(R"({"id":"child","parent":"parent"},{"id":"parent"})"));
}

TEST(JsonNetwork, AcceptsTheLimitsOfEveryNumber) {
  EXPECT_EQ("", refusalOf(withFormat(R"(
    "topoNodes":[{"id":"a","type":0,"parentType":4294967295,"params":[-2147483648,2147483647]}],
    "networkElements":[{"number":-2147483648},{"number":2147483647}],
    "objectLabels":[{"id":"a","type":-2147483648},{"id":"a","type":2147483647}])")));
}

TEST(JsonNetwork, RejectsContentThatIsNotJson) {
  EXPECT_EQ("network.json: 1:1: syntax error while parsing value - invalid literal; last read: 'h'",
            refusalOf("hello"));
}

TEST(JsonNetwork, ReportsLineAndColumnOfASyntaxError) {
  EXPECT_EQ(
      "network.json: 3:13: syntax error while parsing object - unexpected string literal; "
      "expected '}'",
      refusalOf("{\n\"format\": \"topo-network/1\",\n\"ems\":\"é\" \"x\"}"));
}

TEST(JsonNetwork, RejectsATruncatedFile) {
  EXPECT_EQ(
      "network.json: 1:51: syntax error while parsing array - unexpected end of input; expected "
      "']'",
      refusalOf(R"({"format":"topo-network/1","topoNodes":[{"id":"a"})"));
}

TEST(JsonNetwork, RejectsTextAfterTheNetwork) {
  EXPECT_EQ(
      "network.json: 1:28: syntax error while parsing value - unexpected '}'; expected end of "
      "input",
      refusalOf(R"({"format":"topo-network/1"}})"));
}

TEST(JsonNetwork, RejectsARootThatIsNotAnObject) {
  EXPECT_EQ("network.json: top level: must be an object, not a list", refusalOf("[1]"));
  EXPECT_EQ("network.json: top level: must be an object, not a number", refusalOf("5"));
  EXPECT_EQ("network.json: top level: must be an object, not null", refusalOf("null"));
}

TEST(JsonNetwork, RejectsAMissingFormat) {
  EXPECT_EQ("network.json: format: is missing", refusalOf("{}"));
}

TEST(JsonNetwork, RejectsAnotherFormat) {
  EXPECT_EQ(R"(network.json: format: must be "topo-network/1", not "topo-network/2")",
            refusalOf(R"({"format":"topo-network/2"})"));
}

TEST(JsonNetwork, RejectsAFormatThatIsNotAString) {
  EXPECT_EQ("network.json: format: must be a text, not a number", refusalOf(R"({"format":1})"));
}

TEST(JsonNetwork, RejectsAnUnknownField) {
  EXPECT_EQ(R"(network.json: top level: has the unknown field "topoNode")",
            refusalOf(withFormat(R"("topoNode":[])")));
  EXPECT_EQ(R"(network.json: topoNodes[1]: has the unknown field "nmae")",
            refusalOfNodes(R"({"id":"a"},{"id":"b","nmae":"x"})"));
}

TEST(JsonNetwork, RejectsADuplicateField) {
  EXPECT_EQ(R"(network.json: top level: has the field "ems" twice)",
            refusalOf(withFormat(R"("ems":"a","ems":"a")")));
  EXPECT_EQ(R"(network.json: topoNodes[0]: has the field "id" twice)",
            refusalOfNodes(R"({"id":"a","id":"b"})"));
}

TEST(JsonNetwork, RejectsAnObjectWhereAListIsExpected) {
  EXPECT_EQ("network.json: topoNodes: must be a list, not an object",
            refusalOf(withFormat(R"("topoNodes":{})")));
  EXPECT_EQ("network.json: clockLinks: must be a list, not null",
            refusalOf(withFormat(R"("clockLinks":null)")));
}

TEST(JsonNetwork, RejectsAnEntryThatIsNotAnObject) {
  EXPECT_EQ("network.json: topoNodes[1]: must be an object, not a text",
            refusalOfNodes(R"({"id":"a"},"b")"));
}

TEST(JsonNetwork, RejectsAMissingRequiredField) {
  EXPECT_EQ("network.json: topoNodes[0].id: is missing", refusalOfNodes("{}"));
  EXPECT_EQ("network.json: networkElements[0].number: is missing",
            refusalOf(withFormat(R"("networkElements":[{}])")));
  EXPECT_EQ("network.json: clockPositions[0].reference: is missing",
            refusalOf(withFormat(R"("clockPositions":[{}])")));
  EXPECT_EQ("network.json: clockLinks[0].id: is missing",
            refusalOf(withFormat(R"("clockLinks":[{}])")));
  EXPECT_EQ("network.json: objectLabels[0].id: is missing",
            refusalOf(withFormat(R"("objectLabels":[{}])")));
}

TEST(JsonNetwork, RejectsANumberWhereAStringIsExpected) {
  EXPECT_EQ("network.json: ems: must be a text, not true or false",
            refusalOf(withFormat(R"("ems":true)")));
  EXPECT_EQ("network.json: topoNodes[0].id: must be a text, not a number",
            refusalOfNodes(R"({"id":1})"));
  EXPECT_EQ("network.json: topoNodes[0].parent: must be a text, not null",
            refusalOfNodes(R"({"id":"a","parent":null})"));
}

TEST(JsonNetwork, RejectsAnEmptyNodeId) {
  EXPECT_EQ("network.json: topoNodes[0].id: must not be empty", refusalOfNodes(R"({"id":""})"));
}

TEST(JsonNetwork, RejectsAStringWhereANumberIsExpected) {
  EXPECT_EQ("network.json: networkElements[0].number: must be a whole number, not a text",
            refusalOf(withFormat(R"("networkElements":[{"number":"1"}])")));
}

TEST(JsonNetwork, RejectsANumberBeyondSigned32Bits) {
  EXPECT_EQ(
      "network.json: networkElements[0].number: must be a whole number from -2147483648 to "
      "2147483647, not 2147483648",
      refusalOf(withFormat(R"("networkElements":[{"number":2147483648}])")));
  EXPECT_EQ(
      "network.json: topoNodes[0].params[1]: must be a whole number from -2147483648 to "
      "2147483647, not -2147483649",
      refusalOfNodes(R"({"id":"a","params":[0,-2147483649]})"));
}

TEST(JsonNetwork, RejectsANumberBeyondUnsigned32Bits) {
  EXPECT_EQ(
      "network.json: topoNodes[0].type: must be a whole number from 0 to 4294967295, not "
      "4294967296",
      refusalOfNodes(R"({"id":"a","type":4294967296})"));
  EXPECT_EQ(
      "network.json: topoNodes[0].parentType: must be a whole number from 0 to 4294967295, not -1",
      refusalOfNodes(R"({"id":"a","parentType":-1})"));
}

TEST(JsonNetwork, RejectsANumberBeyond64Bits) {
  EXPECT_EQ(
      "network.json: topoNodes[0].type: must be a whole number from 0 to 4294967295, not 1e+20",
      refusalOfNodes(R"({"id":"a","type":100000000000000000000})"));
}

TEST(JsonNetwork, RejectsANumberBeyondFloatingPoint) {
  EXPECT_EQ("network.json: 1:62: number overflow parsing '1e999'",
            refusalOfNodes(R"({"id":"a","type":1e999})"));
}

TEST(JsonNetwork, RejectsAFraction) {
  EXPECT_EQ(
      "network.json: clockPositions[0].values[0]: must be a whole number from -2147483648 to "
      "2147483647, not 1.5",
      refusalOf(withFormat(R"("clockPositions":[{"reference":"a","values":[1.5,0]}])")));
}

TEST(JsonNetwork, RejectsANumberWhereAFlagIsExpected) {
  EXPECT_EQ("network.json: networkElements[0].shown: must be true or false, not a number",
            refusalOf(withFormat(R"("networkElements":[{"number":1,"shown":1}])")));
}

TEST(JsonNetwork, RejectsAListOfTheWrongLengthForAPair) {
  EXPECT_EQ("network.json: topoNodes[0].params: must have 2 entries, not 1",
            refusalOfNodes(R"({"id":"a","params":[1]})"));
  EXPECT_EQ("network.json: clockPositions[0].values: must have 2 entries, not 0",
            refusalOf(withFormat(R"("clockPositions":[{"reference":"a","values":[]}])")));
  EXPECT_EQ("network.json: topoNodes[0].attributes[1]: must have 2 entries, not 3",
            refusalOfNodes(R"({"id":"a","attributes":[["a","b"],["a","b","c"]]})"));
  EXPECT_EQ("network.json: topoNodes[0].attributes[0]: must be a list, not a text",
            refusalOfNodes(R"({"id":"a","attributes":["a"]})"));
  EXPECT_EQ("network.json: topoNodes[0].attributes[0][1]: must be a text, not a number",
            refusalOfNodes(R"({"id":"a","attributes":[["a",1]]})"));
}

TEST(JsonNetwork, ReportsTheFirstFailureOfAnEntryInTheOrderOfTheFormat) {
  EXPECT_EQ("network.json: topoNodes[0].id: is missing",
            refusalOfNodes(R"({"type":"x","parent":5})"));
  EXPECT_EQ("network.json: topoNodes[0].parent: must be a text, not a number",
            refusalOfNodes(R"({"type":"x","parent":5,"id":"a"})"));
  EXPECT_EQ(R"(network.json: topoNodes[0]: has the unknown field "y")",
            refusalOfNodes(R"({"id":5,"z":1,"y":1})"));
  EXPECT_EQ(R"(network.json: topoNodes[0]: has the field "z" twice)",
            refusalOfNodes(R"({"id":5,"y":1,"z":1,"z":1})"));
  EXPECT_EQ("network.json: topoNodes[0].params: must have 2 entries, not 3",
            refusalOfNodes(R"({"id":"a","params":["x",1.5,0]})"));
  EXPECT_EQ("network.json: topoNodes[0].attributes[1][1]: must be a text, not a number",
            refusalOfNodes(R"({"id":"a","attributes":[["a","b"],[[],5],["a"]]})"));
}

TEST(JsonNetwork, ReportsASyntaxErrorBeforeAWrongFieldOfTheSameEntry) {
  EXPECT_EQ(
      "network.json: 1:49: syntax error while parsing object key - unexpected '}'; expected string "
      "literal",
      refusalOfNodes(R"({"id":5,})"));
}

TEST(JsonNetwork, RejectsADuplicateNodeId) {
  EXPECT_EQ(R"(network.json: topoNodes[2].id: "a" is already that of topoNodes[0])",
            refusalOfNodes(R"({"id":"a"},{"id":"b"},{"id":"a"})"));
}

TEST(JsonNetwork, RejectsAnElementNodeWithoutANumber) {
  EXPECT_EQ(
      R"(network.json: topoNodes[1].id: "foo" has no number, which the id of an element needs)",
      refusalOfNodes(R"({"id":"bar"},{"id":"foo","type":1})"));
}

TEST(JsonNetwork, RejectsTwoNodesOfOneElement) {
  EXPECT_EQ(
      R"(network.json: topoNodes[3].id: "7" is shown as ManagedElement=7, as topoNodes[1] is)",
      refusalOfNodes(R"({"id":"ONE=7","type":1},{"id":"NE=7","type":1},{"id":"07"},
                        {"id":"7","type":1})"));
  EXPECT_EQ("", refusalOfNodes(R"({"id":"ONE=7","type":1},{"id":"OS=7","type":1},
                                  {"id":"EQ=1,NE=8","type":1},{"id":"NE=-7","type":1},
                                  {"id":"-7","type":1},{"id":"7","type":1},{"id":"07"})"));
}

TEST(JsonNetwork, RejectsADuplicateElementNumber) {
  EXPECT_EQ("network.json: networkElements[1].number: 5 is already that of networkElements[0]",
            refusalOf(withFormat(R"("networkElements":[{"number":5},{"number":5}])")));
}

TEST(JsonNetwork, RejectsADuplicateClockReference) {
  EXPECT_EQ(
      R"(network.json: clockPositions[1].reference: "p" is already that of clockPositions[0])",
      refusalOf(withFormat(R"("clockPositions":[{"reference":"p"},{"reference":"p"}])")));
}

TEST(JsonNetwork, RejectsADuplicateClockLinkId) {
  EXPECT_EQ(R"(network.json: clockLinks[1].id: "l" is already that of clockLinks[0])",
            refusalOf(withFormat(R"("clockLinks":[{"id":"l"},{"id":"l"}])")));
}

TEST(JsonNetwork, RejectsTwoLabelsOfOneObject) {
  EXPECT_EQ(R"(network.json: objectLabels[2]: 201 "o" is already that of objectLabels[0])",
            refusalOf(withFormat(R"("objectLabels":[{"type":201,"id":"o"},{"type":1,"id":"o"},
              {"type":201,"id":"o","label":"x"}])")));
}

TEST(JsonNetwork, RejectsAParentThatDoesNotExist) {
  EXPECT_EQ(R"(network.json: topoNodes[1].parent: "c" does not exist)",
            refusalOfNodes(R"({"id":"a"},{"id":"b","parent":"c"})"));
}

TEST(JsonNetwork, RejectsAParentCycle) {
  EXPECT_EQ("network.json: topoNodes[1].parent: makes the node its own ancestor",
            refusalOfNodes(R"({"id":"entry","parent":"a"},{"id":"a","parent":"b"},
              {"id":"b","parent":"a"})"));
}

TEST(JsonNetwork, RejectsANodeThatIsItsOwnParent) {
  EXPECT_EQ("network.json: topoNodes[0].parent: makes the node its own ancestor",
            refusalOfNodes(R"({"id":"a","parent":"a"})"));
}

TEST(JsonNetwork, RejectsANulInAText) {
  EXPECT_EQ("network.json: topoNodes[0].name: contains a NUL character",
            refusalOfNodes(R"({"id":"a","name":"x\u0000y"})"));
}

TEST(JsonNetwork, RejectsHalfASurrogatePair) {
  EXPECT_EQ(
      "network.json: 2:14: syntax error while parsing value - invalid string: surrogate "
      "U+D800..U+DBFF must be followed by U+DC00..U+DFFF; last read: '\"\\ud800\"'",
      refusalOf("{\"format\":\"topo-network/1\",\n\"ems\":\"\\ud800\"}"));
}

TEST(JsonNetwork, EscapesHostileTextInTheReason) {
  EXPECT_EQ(R"(network.json: topoNodes[0].parent: "a\x0ab\x1b[31m\xc2\x9b" does not exist)",
            refusalOfNodes(R"({"id":"a","parent":"a\nb\u001b[31m\u009b"})"));
}

}  // namespace
