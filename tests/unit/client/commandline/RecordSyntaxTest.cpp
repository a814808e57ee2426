// The arguments of the commands that change single records.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "client/commandline/Arguments.h"
#include "tests/unit/client/commandline/ParseLine.h"

namespace topoctl {
namespace {

using testing::HasSubstr;
using Words = std::vector<std::string>;

TEST(RecordSyntax, ReadsAMove) {
  const TypedNode node = parsed({"node", "move", "wk", "NE=7", "--parent-kind", "element"}).node;
  EXPECT_EQ(node.id, "wk");
  EXPECT_EQ(node.parent, "NE=7");
  EXPECT_EQ(node.parentKind, NodeKind::kElement);
  EXPECT_EQ(parsed({"node", "move", "wk", ""}).node.parentKind, NodeKind::kOfParent);
}

TEST(RecordSyntax, ReadsOnlyTypedFields) {
  const TypedRecord params = parsed({"node", "change", "wk", "--params", "1,2"}).record;
  EXPECT_EQ(params.numbers->second, 2);
  EXPECT_FALSE(params.attributes);
  const TypedRecord none = parsed({"node", "change", "wk", "--no-attributes"}).record;
  EXPECT_FALSE(none.numbers);
  EXPECT_TRUE(none.attributes->empty());
  const TypedRecord link = parsed({"clock-link", "change", "k", "--a-end", ""}).record;
  EXPECT_EQ(*link.aEnd, "");
  EXPECT_FALSE(link.name);
  EXPECT_FALSE(link.zEnd);
}

TEST(RecordSyntax, AcceptsAnyOptionOfAChangeAlone) {
  const TypedRecord position =
      parsed({"clock-position", "change", "NE=5", "--values", "1,2"}).record;
  EXPECT_EQ(position.numbers->first, 1);
  EXPECT_FALSE(position.name);
  EXPECT_EQ(*parsed({"clock-position", "change", "NE=5", "--label", "L"}).record.name, "L");
  EXPECT_EQ(*parsed({"clock-link", "change", "k", "--name", "N"}).record.name, "N");
  EXPECT_EQ(*parsed({"clock-link", "change", "k", "--z-end", "SSU=8"}).record.zEnd, "SSU=8");
}

TEST(RecordSyntax, ReadsNumbers) {
  EXPECT_EQ(parsed({"element", "delete", "--", "-2147483648"}).record.number, -2147483647 - 1);
  EXPECT_EQ(parsed({"label", "delete", "201", "k"}).record.number, 201);
  for (const std::string number : {"", "x", "OS=5", "2147483648", "1.0", "+1"}) {
    EXPECT_EQ(usageErrorOf({"element", "show", number}),
              "element show: '" + number + "' is not a number from -2147483648 to 2147483647");
  }
}

TEST(RecordSyntax, AcceptsTheSpellingOfObjectsInTables) {
  for (const std::string element : {"7", "NE=7", "ManagedElement=7"}) {
    EXPECT_EQ(parsed({"element", "show", element}).record.number, 7);
  }
  EXPECT_EQ(parsed({"node", "move", "ManagedElement=7", "TopoSubnetwork=wk"}).node.id, "NE=7");
  EXPECT_EQ(parsed({"node", "move", "ManagedElement=7", "TopoSubnetwork=wk"}).node.parent, "wk");
  EXPECT_EQ(parsed({"node", "change", "TopoSubnetwork=wk", "--params", "1,2"}).record.id, "wk");
  EXPECT_EQ(parsed({"clock-position", "delete", "ManagedElement=7"}).record.id, "NE=7");
  const TypedRecord link = parsed({"clock-link", "change", "ClockTopoLinkId=e3", "--a-end",
                                   "ManagedElement=7", "--z-end", "NE=8"})
                               .record;
  EXPECT_EQ(link.id, "e3");
  EXPECT_EQ(*link.aEnd, "NE=7");
  EXPECT_EQ(*link.zEnd, "NE=8");
}

TEST(RecordSyntax, RejectsMissingArguments) {
  EXPECT_EQ(usageErrorOf({"node", "move"}), "node move: an ID is missing");
  EXPECT_EQ(usageErrorOf({"node", "move", "wk"}), "node move: a PARENT is missing");
  EXPECT_EQ(usageErrorOf({"node", "change", "wk"}), "node change: an option is missing");
  EXPECT_EQ(usageErrorOf({"element", "create"}), "element create: a NUMBER is missing");
  EXPECT_EQ(usageErrorOf({"element", "rename", "5"}), "element rename: a NAME is missing");
  EXPECT_EQ(usageErrorOf({"clock-position", "delete"}),
            "clock-position delete: a REFERENCE is missing");
  EXPECT_EQ(usageErrorOf({"clock-position", "change", "NE=5"}),
            "clock-position change: an option is missing");
  EXPECT_EQ(usageErrorOf({"clock-link", "create"}), "clock-link create: an ID is missing");
  EXPECT_EQ(usageErrorOf({"clock-link", "change", "k"}), "clock-link change: an option is missing");
  EXPECT_EQ(usageErrorOf({"label", "set"}), "label set: a TYPE is missing");
  EXPECT_EQ(usageErrorOf({"label", "set", "201", "k"}), "label set: a LABEL is missing");
}

TEST(RecordSyntax, RejectsMalformedOptions) {
  EXPECT_EQ(usageErrorOf({"clock-position", "create", "NE=5", "--values", "1"}),
            "--values: '1' is not A,B, two numbers from -2147483648 to 2147483647");
  EXPECT_EQ(usageErrorOf({"node", "change", "wk", "--attribute", "a=b", "--no-attributes"}),
            "--attribute and --no-attributes exclude each other");
  EXPECT_THAT(usageErrorOf({"element", "delete", "5", "x"}), HasSubstr("'x' is not expected here"));
}

}  // namespace
}  // namespace topoctl
