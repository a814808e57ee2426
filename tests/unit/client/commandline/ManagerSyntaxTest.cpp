#include "client/commandline/Arguments.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/unit/client/commandline/ParseLine.h"

namespace topoctl {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using Words = std::vector<std::string>;

Words objectOf(const Arguments& arguments) {
  Words pairs;
  for (const TypedPair& pair : arguments.object) {
    pairs.push_back("(" + pair.name + "," + pair.value + ")");
  }
  return pairs;
}

// ---- below

TEST(ManagerSyntax, ReadsASubnetworkOrAWholeNameForBelow) {
  const Arguments subnetwork = parsed({"below", "core"});
  EXPECT_THAT(objectOf(subnetwork), ElementsAre("(TopoSubnetwork,core)"));
  EXPECT_FALSE(subnetwork.isWholeName);
  const Arguments whole = parsed({"below", "--name", "EMS=e", "--name=TopoSubnetwork=core"});
  EXPECT_THAT(objectOf(whole), ElementsAre("(EMS,e)", "(TopoSubnetwork,core)"));
  EXPECT_TRUE(whole.isWholeName);
}

TEST(ManagerSyntax, AcceptsAnySubnetwork) {
  for (const std::string id : {"", " ", "topo", "below", "A=B", "[a,b]", "{}", "%%", "-", "-5",
                               "\"quoted\"", "Z\u00fcrich"}) {
    EXPECT_THAT(objectOf(parsed({"below", id})), ElementsAre("(TopoSubnetwork," + id + ")"));
  }
}

TEST(ManagerSyntax, AcceptsAnyPairsInTheOrderTyped) {
  EXPECT_THAT(objectOf(parsed({"below", "--name", "=", "--name", "a=b=c", "--name", "=x", "--name",
                               "[p,q]=[r]", "--name", "-a=-b", "--name", "a=b=c", "--name",
                               "--format=json", "--name", "Z\u00fcrich=\u6771\u4eac"})),
              ElementsAre("(,)", "(a,b=c)", "(,x)", "([p,q],[r])", "(-a,-b)", "(a,b=c)",
                          "(--format,json)", "(Z\u00fcrich,\u6771\u4eac)"));
}

TEST(ManagerSyntax, ReadsArgumentsBetweenOptions) {
  const Options options =
      parseOptions({"--how-many", "7", "below", "--format", "csv", "core", "--timeout", "2"}, "");
  EXPECT_THAT(objectOf(options.arguments), ElementsAre("(TopoSubnetwork,core)"));
  EXPECT_EQ(options.access.howMany, 7U);
  EXPECT_EQ(options.format, Format::kCsv);
}

TEST(ManagerSyntax, AcceptsArgumentsLikeOptionsAfterTwoDashes) {
  for (const std::string text : {"-x", "--format", "--name=A=B", "--", "-h", "++"}) {
    EXPECT_THAT(objectOf(parsed({"below", "--", text})),
                ElementsAre("(TopoSubnetwork," + text + ")"));
    EXPECT_EQ(parsed({"set", "owner", "OS=1", "--", text}).value, text);
    EXPECT_EQ(parsed({"set", "owner", "--name", "OS=1", "--", text}).value, text);
  }
}

TEST(ManagerSyntax, RejectsGetWithoutExactlyOneObject) {
  EXPECT_EQ(usageErrorOf({"get"}), "get: an OBJECT is missing, or a whole name given with --name");
  EXPECT_EQ(usageErrorOf({"get", "NE=5", "--name", "EMS=e"}),
            "get: OBJECT and --name exclude each other");
  EXPECT_EQ(usageErrorOf({"get", "5"}), "get: OBJECT: '5' is not CLASS=VALUE");
  EXPECT_THAT(usageErrorOf({"get", "NE=5", "NE=6"}), HasSubstr("'NE=6' is not expected here"));
}

TEST(ManagerSyntax, RejectsBelowWithoutExactlyOneSubnetwork) {
  EXPECT_EQ(usageErrorOf({"below"}), "below: an ID is missing, or a whole name given with --name");
  EXPECT_EQ(usageErrorOf({"below", "core", "--name", "EMS=e"}),
            "below: ID and --name exclude each other");
  EXPECT_THAT(usageErrorOf({"below", "core", "edge"}), HasSubstr("'edge' is not expected here"));
  EXPECT_EQ(usageErrorOf({"below", "--name"}),
            "--name: NAME=VALUE is missing: A pair of the whole name, sent as given; once for each "
            "pair, in "
            "order");
  EXPECT_EQ(usageErrorOf({"below", "--name", "core"}), "--name: 'core' is not NAME=VALUE");
  EXPECT_EQ(usageErrorOf({"below", "--name", ""}), "--name: '' is not NAME=VALUE");
  EXPECT_THAT(usageErrorOf({"below", "core", "--unique"}), HasSubstr("'--unique' is not expected"));
}

TEST(ManagerSyntax, AcceptsTheSpellingOfASubnetworkInTablesForBelow) {
  EXPECT_THAT(objectOf(parsed({"below", "TopoSubnetwork=core"})),
              ElementsAre("(TopoSubnetwork,core)"));
  EXPECT_THAT(objectOf(parsed({"below", "--name", "TopoSubnetwork=TopoSubnetwork=core"})),
              ElementsAre("(TopoSubnetwork,TopoSubnetwork=core)"));
}

// ---- set

TEST(ManagerSyntax, AcceptsNeForAnElement) {
  EXPECT_THAT(objectOf(parsed({"set", "owner", "NE=5", "ops"})), ElementsAre("(ManagedElement,5)"));
  EXPECT_THAT(objectOf(parsed({"set", "owner", "--name", "NE=5", "ops"})), ElementsAre("(NE,5)"));
  EXPECT_THAT(objectOf(parsed({"get", "NE=5"})), ElementsAre("(ManagedElement,5)"));
  EXPECT_THAT(objectOf(parsed({"get", "--name", "NE=5"})), ElementsAre("(NE,5)"));
}

TEST(ManagerSyntax, ReadsAnAttributeAnObjectAndAValueForSet) {
  const std::vector<std::pair<const char*, Attribute>> attributes = {
      {"user-label", Attribute::kUserLabel},
      {"owner", Attribute::kOwner},
      {"native-name", Attribute::kNativeName}};
  for (const auto& [name, attribute] : attributes) {
    const Arguments arguments = parsed({"set", name, "ManagedElement=5", "a=b"});
    EXPECT_EQ(arguments.attribute, attribute);
    EXPECT_THAT(objectOf(arguments), ElementsAre("(ManagedElement,5)"));
    EXPECT_FALSE(arguments.isWholeName);
    EXPECT_EQ(arguments.value, "a=b");
    EXPECT_FALSE(arguments.unique);
  }
}

TEST(ManagerSyntax, ReadsAWholeNameForSet) {
  const Arguments arguments = parsed({"set", "owner", "--name", "EMS=e", "ops", "--name", "OS=1"});
  EXPECT_THAT(objectOf(arguments), ElementsAre("(EMS,e)", "(OS,1)"));
  EXPECT_TRUE(arguments.isWholeName);
  EXPECT_EQ(arguments.value, "ops");
}

TEST(ManagerSyntax, AcceptsAnyTextAsValue) {
  for (const std::string text :
       {"", " ", "topo", "set", "owner", "[a,b]", "{}", "-1", "Z\u00fcrich \u6771\u4eac"}) {
    EXPECT_EQ(parsed({"set", "owner", "OS=1", text}).value, text);
  }
}

TEST(ManagerSyntax, ReadsAPairForInfo) {
  const auto pairOf = [](const std::string& text) {
    const Arguments arguments = parsed({"set", "info", "OS=1", text});
    EXPECT_EQ(arguments.attribute, Attribute::kInfo);
    const TypedPair pair = arguments.pair;
    return "(" + pair.name + "," + pair.value + ")";
  };
  EXPECT_EQ(pairOf("Region=north"), "(Region,north)");
  EXPECT_EQ(pairOf("Region="), "(Region,)");
  EXPECT_EQ(pairOf("=x=y"), "(,x=y)");
}

TEST(ManagerSyntax, ReadsTheOptionForAUniqueUserLabel) {
  EXPECT_TRUE(parsed({"set", "--unique", "user-label", "OS=1", "x"}).unique);
  EXPECT_TRUE(parsed({"set", "user-label", "OS=1", "x", "--unique"}).unique);
  for (const std::string attribute : {"owner", "native-name", "info"}) {
    EXPECT_EQ(usageErrorOf({"set", attribute, "OS=1", "x=y", "--unique"}),
              "set " + attribute + ": --unique is for user-label alone");
  }
}

TEST(ManagerSyntax, RejectsSetWithMissingArguments) {
  const std::string attributes = "the attributes are: user-label, owner, native-name, info";
  EXPECT_EQ(usageErrorOf({"set"}), "set: an attribute is missing; " + attributes);
  EXPECT_EQ(usageErrorOf({"set", "colour"}), "set: 'colour' is not an attribute; " + attributes);
  EXPECT_EQ(usageErrorOf({"set", "", "OS=1", "x"}), "set: '' is not an attribute; " + attributes);
  EXPECT_EQ(usageErrorOf({"set", "owner"}), "set owner: OBJECT (or --name) and VALUE are missing");
  EXPECT_EQ(usageErrorOf({"set", "owner", "OS=1"}),
            "set owner: OBJECT (or --name) or VALUE is missing");
  EXPECT_EQ(usageErrorOf({"set", "owner", "--name", "OS=1"}), "set owner: VALUE is missing");
  EXPECT_EQ(usageErrorOf({"set", "owner", "OS=1", "ops", "--name", "OS=1"}),
            "set owner: OBJECT and --name exclude each other");
  EXPECT_THAT(usageErrorOf({"set", "owner", "OS=1", "ops", "x"}), HasSubstr("'x' is not expected"));
}

TEST(ManagerSyntax, RejectsSetWithMalformedArguments) {
  EXPECT_EQ(usageErrorOf({"set", "owner", "core", "ops"}),
            "set owner: OBJECT: 'core' is not CLASS=VALUE");
  EXPECT_EQ(usageErrorOf({"set", "owner", "--name", "core", "ops"}),
            "--name: 'core' is not NAME=VALUE");
  EXPECT_EQ(usageErrorOf({"set", "info", "OS=1", "north"}),
            "set info: VALUE: 'north' is not NAME=TEXT");
  EXPECT_EQ(usageErrorOf({"set", "info", "OS=1", ""}), "set info: VALUE: '' is not NAME=TEXT");
}

// ---- other commands

TEST(ManagerSyntax, RejectsArgumentsOfCommandsWithoutArguments) {
  for (const char* const command :
       {"topo", "protect", "clocks", "clock-links", "tree", "capabilities"}) {
    EXPECT_THAT(usageErrorOf({command, "core"}), HasSubstr("'core' is not expected here"));
    EXPECT_THAT(usageErrorOf({command, "--name", "A=B"}),
                HasSubstr("'--name' is not expected here"));
  }
}

TEST(ManagerSyntax, RejectsFormatsOtherThanTableForTree) {
  EXPECT_EQ(parseOptions({"tree", "--format", "table"}, "").format, Format::kTable);
  for (const char* const format : {"json", "csv"}) {
    EXPECT_EQ(usageErrorOf({"tree", "--format", format}),
              "tree: --format must be table: a tree is drawn for people; topo has the same nodes "
              "as records");
  }
}

TEST(ManagerSyntax, IsExplainedByTheHelp) {
  EXPECT_THAT(parseOptions({"below", "--help"}, "").notice,
              testing::AllOf(HasSubstr("below [OPTIONS] [ID]"), HasSubstr("--name NAME=VALUE")));
  EXPECT_THAT(parseOptions({"set", "--help"}, "").notice,
              testing::AllOf(HasSubstr("set [OPTIONS] [ATTRIBUTE] [OBJECT] [VALUE]"),
                             HasSubstr("--name NAME=VALUE"), HasSubstr("--unique")));
}

}  // namespace
}  // namespace topoctl
