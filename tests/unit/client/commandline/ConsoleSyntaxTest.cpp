// The arguments of the commands that call the agent's console.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "client/commandline/Arguments.h"
#include "tests/unit/client/commandline/ParseLine.h"

namespace topoctl {
namespace {

using testing::HasSubstr;
using Words = std::vector<std::string>;

// ---- node create

TEST(ConsoleSyntax, HasDefaultsForANewNode) {
  const TypedNode node = parsed({"node", "create", "core", "--name", "Core"}).node;
  EXPECT_EQ(node.id, "core");
  EXPECT_EQ(node.name, "Core");
  EXPECT_EQ(node.parent, "");
  EXPECT_EQ(node.parentKind, NodeKind::kOfParent);
  EXPECT_EQ(node.kind, NodeKind::kSubnetwork);
  EXPECT_EQ(node.params.first, 0);
  EXPECT_EQ(node.params.second, 0);
  EXPECT_TRUE(node.attributes.empty());
}

TEST(ConsoleSyntax, ReadsAllOptionsOfANewNode) {
  const TypedNode node =
      parsed({"node", "create", "--parent", "ring", "--parent-kind", "element", "7", "--name",
              "Z\u00fcrich", "--kind", "element", "--params", "-2147483648,2147483647",
              "--attribute", "Region=north", "--attribute", "Region=a=b", "--attribute", "="})
          .node;
  EXPECT_EQ(node.id, "7");
  EXPECT_EQ(node.parent, "ring");
  EXPECT_EQ(node.parentKind, NodeKind::kElement);
  EXPECT_EQ(node.kind, NodeKind::kElement);
  EXPECT_EQ(node.params.first, -2147483647 - 1);
  EXPECT_EQ(node.params.second, 2147483647);
  ASSERT_EQ(node.attributes.size(), 3U);
  EXPECT_EQ(node.attributes[0].name, "Region");
  EXPECT_EQ(node.attributes[1].value, "a=b");
  EXPECT_EQ(node.attributes[2].name, "");
}

TEST(ConsoleSyntax, UsesTheLastOfARepeatedOption) {
  const TypedNode node = parsed({"node", "create", "7", "--name", "a", "--name", "b", "--kind",
                                 "nonsense", "--kind", "element"})
                             .node;
  EXPECT_EQ(node.name, "b");
  EXPECT_EQ(node.kind, NodeKind::kElement);
}

TEST(ConsoleSyntax, AcceptsArgumentsLikeOptionsAfterTwoDashes) {
  for (const std::string id : {"-1", "--name", "-h", "++", "--"}) {
    EXPECT_EQ(parsed({"node", "create", "--name", "x", "--", id}).node.id, id);
    EXPECT_EQ(parsed({"node", "delete", "--", id}).node.id, id);
    EXPECT_EQ(parsed({"node", "rename", "--", id, "x"}).node.id, id);
    EXPECT_EQ(parsed({"node", "rename", "x", "--", id}).node.name, id);
    EXPECT_EQ(parsed({"import", "--", id}).file, id);
  }
}

TEST(ConsoleSyntax, AcceptsNamesOfCommandsAsArguments) {
  for (const std::string id : {"node", "create", "delete", "topo", "module", "[a,b]", "", " "}) {
    EXPECT_EQ(parsed({"node", "delete", id}).node.id, id);
    EXPECT_EQ(parsed({"node", "create", id, "--name", id}).node.id, id);
  }
}

TEST(ConsoleSyntax, RejectsMissingAndMalformedArgumentsOfANewNode) {
  EXPECT_EQ(usageErrorOf({"node", "create"}), "node create: an ID is missing");
  EXPECT_EQ(usageErrorOf({"node", "create", "7"}), "node create: --name is missing");
  const auto errorOf = [](const Words& more) {
    Words words = {"node", "create", "7", "--name", "x"};
    words.insert(words.end(), more.begin(), more.end());
    return usageErrorOf(words);
  };
  EXPECT_EQ(errorOf({"--kind", "ring"}), "--kind: 'ring' is neither subnetwork nor element");
  EXPECT_EQ(errorOf({"--parent-kind", ""}), "--parent-kind: '' is neither subnetwork nor element");
  EXPECT_EQ(errorOf({"--attribute", "Region"}), "--attribute: 'Region' is not NAME=VALUE");
  for (const std::string params : {"", "1", "1,", ",1", "1,2,3", "1, 2", "a,b", "2147483648,0",
                                   "0,-2147483649", "+1,2", "1.0,2"}) {
    EXPECT_EQ(errorOf({"--params", params}),
              "--params: '" + params + "' is not A,B, two numbers from -2147483648 to 2147483647");
  }
  EXPECT_THAT(errorOf({"8"}), HasSubstr("'8' is not expected here"));
  EXPECT_THAT(errorOf({"--unique"}), HasSubstr("'--unique' is not expected here"));
}

TEST(ConsoleSyntax, AcceptsTheSpellingOfObjectsInTables) {
  const TypedNode node = parsed({"node", "create", "ManagedElement=7", "--name", "x", "--parent",
                                 "TopoSubnetwork=a=b"})
                             .node;
  EXPECT_EQ(node.id, "NE=7");
  EXPECT_EQ(node.parent, "a=b");
  EXPECT_EQ(parsed({"node", "delete", "TopoSubnetwork=core"}).node.id, "core");
  EXPECT_EQ(parsed({"node", "rename", "NE=7", "ManagedElement=8"}).node.id, "NE=7");
  EXPECT_EQ(parsed({"node", "rename", "NE=7", "ManagedElement=8"}).node.name, "ManagedElement=8");
}

TEST(ConsoleSyntax, TakesTheKindOfANewNodeFromItsName) {
  const auto kindOf = [](const std::string& id) {
    return parsed({"node", "create", id, "--name", "x"}).node.kind;
  };
  EXPECT_EQ(NodeKind::kElement, kindOf("ManagedElement=7"));
  EXPECT_EQ(NodeKind::kSubnetwork, kindOf("TopoSubnetwork=7"));
  EXPECT_EQ(NodeKind::kSubnetwork, kindOf("NE=7"));
  EXPECT_EQ(
      "--kind: 'ManagedElement=7' is not the name of a subnetwork",
      usageErrorOf({"node", "create", "ManagedElement=7", "--name", "x", "--kind", "subnetwork"}));
  EXPECT_EQ(
      "--kind: 'TopoSubnetwork=7' is not the name of an element",
      usageErrorOf({"node", "create", "TopoSubnetwork=7", "--name", "x", "--kind", "element"}));
}

// ---- other commands

TEST(ConsoleSyntax, RejectsMissingArgumentsOfOtherCommands) {
  EXPECT_EQ(usageErrorOf({"node", "delete"}), "node delete: an ID is missing");
  EXPECT_EQ(usageErrorOf({"node", "rename"}), "node rename: ID and NAME are missing");
  EXPECT_EQ(usageErrorOf({"node", "rename", "7"}), "node rename: a NAME is missing");
  EXPECT_EQ(usageErrorOf({"import"}), "import: a FILE is missing");
  EXPECT_EQ(usageErrorOf({"backup"}), "backup: a FILE is missing");
  EXPECT_EQ(usageErrorOf({"export"}), "export: a FILE is missing");
  EXPECT_EQ(usageErrorOf({"restore"}), "restore: a FILE is missing");
  EXPECT_EQ(usageErrorOf({"test-switch"}), "test-switch: on or off is missing");
  EXPECT_EQ(usageErrorOf({"test-switch", "ON"}), "test-switch: 'ON' is neither on nor off");
  for (const Words& words : std::vector<Words>{{"node", "delete", "7", "x"},
                                               {"node", "rename", "7", "n", "x"},
                                               {"import", "f", "x"},
                                               {"test-switch", "on", "x"},
                                               {"status", "x"},
                                               {"module", "reload", "x"}}) {
    EXPECT_THAT(usageErrorOf(words), HasSubstr("'x' is not expected here"));
  }
}

TEST(ConsoleSyntax, ReadsTheOptionsOfAnImport) {
  const Arguments plain = parsed({"import", "f"});
  EXPECT_FALSE(plain.replace || plain.dryRun);
  EXPECT_EQ(plain.firstElement, 0);
  const Arguments all = parsed({"import", "f", "--replace", "--dry-run", "--first-element", "7"});
  EXPECT_TRUE(all.replace && all.dryRun);
  EXPECT_EQ(all.firstElement, 7);
  EXPECT_FALSE(parsed({"import", "f", "--dry-run"}).replace);
  EXPECT_FALSE(parsed({"import", "f", "--replace"}).dryRun);
  for (const std::string number : {"", "0", "-1", "x", "2147483648"}) {
    EXPECT_EQ(usageErrorOf({"import", "f", "--first-element", number}),
              "--first-element: '" + number + "' is not a number from 1 to 2147483647");
  }
}

TEST(ConsoleSyntax, ReadsTheStateOfTheTestSwitch) {
  EXPECT_TRUE(parsed({"test-switch", "on"}).on);
  EXPECT_FALSE(parsed({"test-switch", "off"}).on);
}

TEST(ConsoleSyntax, IsExplainedByTheHelp) {
  EXPECT_THAT(parseOptions({"node", "create", "--help"}, "").notice,
              testing::AllOf(HasSubstr("create [OPTIONS] [ID]"), HasSubstr("--parent-kind KIND"),
                             HasSubstr("--attribute NAME=VALUE")));
  EXPECT_THAT(parseOptions({"node", "--help"}, "").notice,
              testing::AllOf(HasSubstr("create "), HasSubstr("delete "), HasSubstr("rename ")));
}

}  // namespace
}  // namespace topoctl
