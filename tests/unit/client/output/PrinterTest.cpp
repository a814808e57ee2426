#include "client/output/Printer.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "client/agent/RecordFields.h"
#include "tests/unit/client/support/FakeAgent.h"

namespace topoctl {
namespace {

using TopoManagementManager::Node_T;
using TopoManagementManager::NodeList_T;

std::string printed(const NodeList_T& nodes, Format format) {
  Batches<NodeList_T> batches;
  batches.add(new NodeList_T(nodes));
  std::ostringstream out;
  printRows(ListRows<NodeList_T>(batches, nodeFields()), format, out);
  return out.str();
}

NodeList_T listOf(const Node_T& node) {
  NodeList_T nodes;
  nodes.length(1);
  nodes[0] = node;
  return nodes;
}

// A node that is empty except for the texts of the test.
Node_T bareNode() {
  Node_T node;
  node.nodeType = 0;
  node.nodeParam1 = 0;
  node.nodeParam2 = 0;
  return node;
}

Node_T nodeNamed(const char* nativeEMSName) {
  Node_T node = bareNode();
  node.nativeEMSName = nativeEMSName;
  return node;
}

void addInfo(Node_T& node, const char* name, const char* value) {
  const CORBA::ULong last = node.additionalInfo.length();
  node.additionalInfo.length(last + 1);
  node.additionalInfo[last].name = name;
  node.additionalInfo[last].value = value;
}

std::string printedCapabilities(const common::CapabilityList_T& capabilities, Format format) {
  Batches<common::CapabilityList_T> batches;
  batches.add(new common::CapabilityList_T(capabilities));
  std::ostringstream out;
  printRows(ListRows<common::CapabilityList_T>(batches, pairFields()), format, out);
  return out.str();
}

// ---- json

TEST(JsonPrinter, WritesOneRecordALineWithFieldsInIdlOrder) {
  EXPECT_EQ(printed(makeNodes(2), Format::kJson),
            "[\n"
            R"({"name":[{"name":"EMS","value":"zurich"},{"name":"TopoSubnetwork","value":"n0"}],)"
            R"("nativeEMSName":"name of n0","nodeType":1,"nodeParam1":-7,"nodeParam2":47377,)"
            R"("relatedName":[{"name":"EMS","value":"zurich"}],)"
            R"("additionalInfo":[{"name":"Region","value":"north"}]},)"
            "\n"
            R"({"name":[{"name":"EMS","value":"zurich"},{"name":"TopoSubnetwork","value":"n1"}],)"
            R"("nativeEMSName":"name of n1","nodeType":1,"nodeParam1":-7,"nodeParam2":47377,)"
            R"("relatedName":[{"name":"EMS","value":"zurich"}],)"
            R"("additionalInfo":[{"name":"Region","value":"north"}]})"
            "\n]\n");
}

TEST(JsonPrinter, WritesAnEmptyArrayForNoRecords) {
  EXPECT_EQ(printed(NodeList_T(), Format::kJson), "[]\n");
}

TEST(JsonPrinter, WritesNumbersOfTheFullWidth) {
  Node_T node = bareNode();
  node.nodeType = 4294967295U;
  node.nodeParam1 = -2147483647 - 1;
  node.nodeParam2 = 2147483647;
  EXPECT_EQ(printed(listOf(node), Format::kJson),
            "[\n"
            R"({"name":[],"nativeEMSName":"","nodeType":4294967295,"nodeParam1":-2147483648,)"
            R"("nodeParam2":2147483647,"relatedName":[],"additionalInfo":[]})"
            "\n]\n");
}

TEST(JsonPrinter, KeepsValidTextsOnOneLine) {
  const char* const text = "quote \" backslash \\ newline \n escape \x1b Z\u00fcrich \U0001F600";
  const std::string json = printed(listOf(nodeNamed(text)), Format::kJson);
  EXPECT_EQ(nlohmann::json::parse(json)[0]["nativeEMSName"], text);
  EXPECT_EQ(std::count(json.begin(), json.end(), '\n'), 3);
}

TEST(JsonPrinter, ReplacesInvalidUtf8) {
  Node_T node = nodeNamed("Z\xfcrich");
  addInfo(node, "\xff", "\xe6\x9d");
  const auto json = nlohmann::json::parse(printed(listOf(node), Format::kJson));
  EXPECT_EQ(json[0]["nativeEMSName"], "Z\ufffdrich");
  EXPECT_EQ(json[0]["additionalInfo"][0]["name"], "\ufffd");
  EXPECT_EQ(json[0]["additionalInfo"][0]["value"], "\ufffd");
}

TEST(JsonPrinter, KeepsTheOrderOfRecordsAcrossBatches) {
  Batches<NodeList_T> batches;
  batches.add(new NodeList_T(makeNodes(2)));
  batches.add(new NodeList_T());
  batches.add(new NodeList_T(listOf(makeNode("last"))));
  std::ostringstream out;
  printRows(ListRows<NodeList_T>(batches, nodeFields()), Format::kJson, out);
  const auto json = nlohmann::json::parse(out.str());
  ASSERT_EQ(json.size(), 3U);
  EXPECT_EQ(json[0]["nativeEMSName"], "name of n0");
  EXPECT_EQ(json[1]["nativeEMSName"], "name of n1");
  EXPECT_EQ(json[2]["nativeEMSName"], "name of last");
}

TEST(JsonPrinter, WritesCapabilities) {
  common::CapabilityList_T capabilities;
  capabilities.length(1);
  capabilities[0].name = "common::Common_I::setOwner";
  capabilities[0].value = "Supported";
  EXPECT_EQ(printedCapabilities(capabilities, Format::kJson),
            "[\n{\"name\":\"common::Common_I::setOwner\",\"value\":\"Supported\"}\n]\n");
}

// ---- csv

constexpr const char* kCsvHeader =
    "name,nativeEMSName,nodeType,nodeParam1,nodeParam2,relatedName,additionalInfo\r\n";

TEST(CsvPrinter, WritesAHeaderAndOneLineARecord) {
  EXPECT_EQ(printed(makeNodes(2), Format::kCsv),
            std::string(kCsvHeader) +
                "EMS=zurich;TopoSubnetwork=n0,name of n0,1,-7,47377,EMS=zurich,Region=north\r\n"
                "EMS=zurich;TopoSubnetwork=n1,name of n1,1,-7,47377,EMS=zurich,Region=north\r\n");
}

TEST(CsvPrinter, WritesOnlyTheHeaderForNoRecords) {
  EXPECT_EQ(printed(NodeList_T(), Format::kCsv), kCsvHeader);
}

TEST(CsvPrinter, OmitsTheHeader) {
  Batches<NodeList_T> batches;
  std::ostringstream out;
  printRows(ListRows<NodeList_T>(batches, nodeFields()), {Format::kCsv, {false, 0}}, out);
  EXPECT_EQ(out.str(), "");
}

TEST(CsvPrinter, QuotesCommasQuotesAndLineBreaks) {
  const auto line = [](const char* text) {
    return printed(listOf(nodeNamed(text)), Format::kCsv).substr(std::string(kCsvHeader).size());
  };
  EXPECT_EQ(line("a,b"), ",\"a,b\",0,0,0,,\r\n");
  EXPECT_EQ(line("say \"hello\""), ",\"say \"\"hello\"\"\",0,0,0,,\r\n");
  EXPECT_EQ(line("two\nlines"), ",\"two\nlines\",0,0,0,,\r\n");
  EXPECT_EQ(line("two\r\nlines"), ",\"two\r\nlines\",0,0,0,,\r\n");
  EXPECT_EQ(line("two\rlines"), ",\"two\rlines\",0,0,0,,\r\n");
  EXPECT_EQ(line("semi;colon = \\"), ",semi;colon = \\,0,0,0,,\r\n");
  EXPECT_EQ(line("Z\xfcrich"), ",Z\ufffdrich,0,0,0,,\r\n");
}

TEST(CsvPrinter, EscapesTheSeparatorsOfPairs) {
  const auto pairs = [](const std::vector<std::pair<const char*, const char*>>& list) {
    Node_T node = bareNode();
    for (const auto& [name, value] : list) {
      addInfo(node, name, value);
    }
    const std::string csv = printed(listOf(node), Format::kCsv);
    const std::size_t start = std::string(kCsvHeader).size() + std::string(",,0,0,0,,").size();
    return csv.substr(start, csv.size() - start - 2);
  };
  EXPECT_EQ(pairs({}), "");
  EXPECT_EQ(pairs({{"", ""}}), "=");
  EXPECT_EQ(pairs({{"", ""}, {"", ""}}), "=;=");
  EXPECT_EQ(pairs({{"a", "b"}, {"c", "d"}}), "a=b;c=d");
  EXPECT_EQ(pairs({{"a", "b;c=d"}}), "a=b\\;c\\=d");
  EXPECT_EQ(pairs({{"a=b", "c"}}), "a\\=b=c");
  EXPECT_EQ(pairs({{"a", "b\\"}, {"c", "d"}}), "a=b\\\\;c=d");
  EXPECT_EQ(pairs({{"a", "b,c"}}), "\"a=b,c\"");
}

TEST(CsvPrinter, WritesCapabilities) {
  common::CapabilityList_T capabilities;
  capabilities.length(1);
  capabilities[0].name = "common::Common_I::setOwner";
  capabilities[0].value = "Supported";
  EXPECT_EQ(printedCapabilities(capabilities, Format::kCsv),
            "name,value\r\ncommon::Common_I::setOwner,Supported\r\n");
}

}  // namespace
}  // namespace topoctl
