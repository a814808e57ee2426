#include "client/output/Table.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <sstream>
#include <string_view>
#include <vector>

#include "client/base/Utf8.h"
#include "tests/unit/client/support/FakeAgent.h"

namespace topoctl {
namespace {

using TopoManagementManager::NodeList_T;
using Texts = std::vector<std::string>;

std::string printed(const NodeList_T& nodes, const TableStyle& style = {}) {
  Batches<NodeList_T> batches;
  batches.add(new NodeList_T(nodes));
  std::ostringstream out;
  printTable(ListRows<NodeList_T>(batches, nodeFields()), style, out);
  return out.str();
}

// A table of pairs with these names and the value "|".
std::string printedPairs(const Texts& names, const TableStyle& style = {}) {
  Batches<common::CapabilityList_T> batches;
  auto* const pairs = new common::CapabilityList_T;
  batches.add(pairs);
  pairs->length(static_cast<CORBA::ULong>(names.size()));
  for (CORBA::ULong i = 0; i < pairs->length(); ++i) {
    (*pairs)[i].name = names[i].c_str();
    (*pairs)[i].value = "|";
  }
  std::ostringstream out;
  printTable(ListRows<common::CapabilityList_T>(batches, pairFields()), style, out);
  return out.str();
}

TableStyle within(std::size_t width) {
  return {true, width};
}

Texts linesOf(const std::string& text) {
  std::istringstream stream(text);
  Texts lines;
  for (std::string line; std::getline(stream, line);) {
    lines.push_back(line);
  }
  return lines;
}

std::size_t widestLine(const std::string& text) {
  std::size_t widest = 0;
  for (const std::string& line : linesOf(text)) {
    widest = std::max(widest, displayWidth(line));
  }
  return widest;
}

constexpr const char* kHeader =
    "name               nativeEMSName  nodeType  nodeParam1  nodeParam2  relatedName  "
    "additionalInfo\n";

TEST(Table, AlignsColumnsAndShowsTheClassOfObjects) {
  NodeList_T nodes = makeNodes(2);
  nodes[1].nodeParam1 = 12345678;
  nodes[1].nodeParam2 = 0;
  EXPECT_EQ(
      printed(nodes),
      kHeader + std::string("TopoSubnetwork=n0  name of n0            1          -7       47377  "
                            "EMS=zurich   Region=north\n"
                            "TopoSubnetwork=n1  name of n1            1    12345678           0  "
                            "EMS=zurich   Region=north\n"));
}

TEST(Table, HasOnlyTheHeaderWithoutRecords) {
  EXPECT_EQ(printed(NodeList_T()),
            "name  nativeEMSName  nodeType  nodeParam1  nodeParam2  relatedName  additionalInfo\n");
}

TEST(Table, CutsItsHeaderAsTextsWithoutRecords) {
  EXPECT_EQ(printed(NodeList_T(), within(20)),
            "name  nativeE\u2026  nodeType  nodePar\u2026  nodePar\u2026  related\u2026  "
            "additio\u2026\n");
}

// A column of texts and numbers.
class MixedRows final : public Rows {
 public:
  std::vector<std::string_view> fieldNames() const override { return {"name", "value"}; }
  void forEach(const std::function<void(const Row&)>& visit) const override {
    visit({std::string_view("a"), std::string_view("text")});
    visit({std::string_view("b"), std::int64_t{7}});
  }
};

TEST(Table, AlignsNumbersAmongTextsAsTexts) {
  std::ostringstream out;
  printTable(MixedRows(), {}, out);
  EXPECT_EQ(out.str(), "name  value\na     text\nb     7\n");
}

TEST(Table, OmitsTheHeader) {
  TableStyle style;
  style.header = false;
  EXPECT_EQ(printed(NodeList_T(), style), "");
  EXPECT_EQ(printedPairs({"a", "bc"}, style), "a   |\nbc  |\n");
}

TEST(Table, AlignsByDisplayWidth) {
  EXPECT_EQ(printedPairs({"Zurich", "Z\u00fcrich", "\u6771\u4eac\u90fd", "Z\xfcrich"}),
            "name    value\n"
            "Zurich  |\n"
            "Z\u00fcrich  |\n"
            "\u6771\u4eac\u90fd  |\n"
            "Z\ufffdrich  |\n");
}

TEST(Table, EscapesControlCharacters) {
  NodeList_T nodes = makeNodes(1);
  nodes[0].name.length(0);
  nodes[0].relatedName.length(0);
  nodes[0].nativeEMSName = "\x1b[2J\n";
  nodes[0].additionalInfo.length(0);
  addPair(nodes[0].additionalInfo, "a\tb", "c\rd");
  addPair(nodes[0].additionalInfo, "e", "f");
  EXPECT_EQ(printed(nodes),
            "name  nativeEMSName  nodeType  nodeParam1  nodeParam2  relatedName  additionalInfo\n"
            "      \\x1b[2J\\n             1          -7       47377               "
            "a\\tb=c\\rd; e=f\n");
}

TEST(Table, WithoutALimitALongTextWidensOnlyItsOwnRow) {
  const std::string text(500, 'x');
  EXPECT_EQ(printedPairs({"a", text, "b"}), "name" + std::string(58, ' ') + "value\na" +
                                                std::string(61, ' ') + "|\n" + text + "  |\nb" +
                                                std::string(61, ' ') + "|\n");
}

TEST(Table, CutsTextsToTheWidthOfTheTerminal) {
  EXPECT_EQ(printedPairs({"short", "a long text of many words"}, within(20)),
            "name           value\n"
            "short          |\n"
            "a long text \u2026  |\n");
}

TEST(Table, CutsNamesOfParentsAtTheirBegin) {
  NodeList_T nodes = makeNodes(1);
  addPair(nodes[0].relatedName, "TopoSubnetwork", "Europe/Central");
  const std::string text = printed(nodes, within(90));
  EXPECT_NE(text.find("TopoSubnetwork=n0"), std::string::npos) << text;
  EXPECT_NE(text.find("=Europe/Central "), std::string::npos) << text;
}

TEST(Table, NeverCutsNumbers) {
  const std::string text = printed(makeNodes(1), within(20));
  EXPECT_NE(text.find(" 47377 "), std::string::npos) << text;
  EXPECT_NE(text.find(" -7 "), std::string::npos) << text;
}

TEST(Table, FitsIntoAnyUsualTerminal) {
  NodeList_T nodes = makeNodes(3);
  nodes[0].nativeEMSName = std::string(300, 'x').c_str();
  nodes[1].nativeEMSName = "\u6771\u4eac\u90fd\u6771\u4eac\u90fd\u6771\u4eac\u90fd\u6771\u4eac";
  addPair(nodes[2].additionalInfo, "Location", std::string(200, 'y'));
  for (const std::size_t width : {70U, 80U, 81U, 100U, 132U, 250U, 1000U}) {
    EXPECT_LE(widestLine(printed(nodes, within(width))), width) << width;
  }
}

}  // namespace
}  // namespace topoctl
