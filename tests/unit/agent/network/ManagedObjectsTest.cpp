// Parsing and formatting of names, and the object of each record.

#include "agent/network/ManagedObjects.h"

#include <gtest/gtest.h>

#include "tests/support/Pairs.h"
#include "tests/unit/agent/support/NetworkFiles.h"

namespace {

using agent::NumberedObject;
using agent::ObjectKey;

Pairs nameWith(const std::string& objectClass, const std::string& value) {
  return {{"EMS", "E"}, {objectClass, value}};
}

std::optional<ObjectKey> keyOfName(const std::string& objectClass, const std::string& value) {
  std::string problem;
  return agent::parseObjectName(nameOf(nameWith(objectClass, value)), "E", problem);
}

// The problem of a malformed name; empty for a valid name.
std::string problemOf(const Pairs& pairs) {
  std::string problem;
  return agent::parseObjectName(nameOf(pairs), "E", problem) ? "" : problem;
}

TEST(ManagedObjects, ParseEveryClassOfNames) {
  EXPECT_EQ((ObjectKey{1, "NE=5"}), keyOfName("ManagedElement", "5"));
  EXPECT_EQ((ObjectKey{2, "ONE=0"}), keyOfName("ONE", "0"));
  EXPECT_EQ((ObjectKey{3, "OS=2147483647"}), keyOfName("OS", "2147483647"));
  EXPECT_EQ((ObjectKey{54, "a/b"}), keyOfName("TopoSubnetwork", "a/b"));
  EXPECT_EQ((ObjectKey{201, "k"}), keyOfName("ClockTopoLinkId", "k"));
  EXPECT_EQ((ObjectKey{201, ""}), keyOfName("ClockTopoLinkId", ""));
}

TEST(ManagedObjects, ReportTheProblemOfAMalformedName) {
  EXPECT_EQ("it has 0 pairs instead of 2", problemOf(Pairs{}));
  EXPECT_EQ("it has 1 pair instead of 2", problemOf({{"EMS", "E"}}));
  EXPECT_EQ("it has 1000000 pairs instead of 2", problemOf(Pairs(1000000, {"EMS", "E"})));
  EXPECT_EQ("its first pair is not the \"EMS\"", problemOf({{"OS", "1"}, {"EMS", "E"}}));
  EXPECT_EQ("the \"EMS\" is not \"E\"", problemOf({{"EMS", "e"}, {"OS", "1"}}));
  EXPECT_EQ("\"NE\" is no class of objects", problemOf(nameWith("NE", "1")));
  EXPECT_EQ("the value of \"OS\" is no number of an object", problemOf(nameWith("OS", "01")));
  EXPECT_EQ("the value of \"OS\" is no number of an object",
            problemOf(nameWith("OS", longText('1'))));
  EXPECT_EQ("the value of \"TopoSubnetwork\" is empty", problemOf(nameWith("TopoSubnetwork", "")));
}

TEST(ManagedObjects, FormatNamesShortAndPrintable) {
  EXPECT_EQ("{}", agent::formatName(nameOf({})));
  EXPECT_EQ("{EMS=E, OS=1}", agent::formatName(nameOf({{"EMS", "E"}, {"OS", "1"}})));
  EXPECT_EQ("{a\\x0a=\\xff}", agent::formatName(nameOf({{"a\n", "\xff"}})));
  EXPECT_EQ("{=, =, =, =, ...}", agent::formatName(nameOf(Pairs(1000000))));
  EXPECT_EQ('{' + std::string(80, 'x') + "...=" + std::string(80, 'y') + "...}",
            agent::formatName(nameOf({{longText('x'), longText('y')}})));
}

TEST(ManagedObjects, FormatKeysAsTheirNames) {
  EXPECT_EQ("{EMS=E, ManagedElement=5}", agent::formatName(ObjectKey{1, "NE=5"}, "E"));
  EXPECT_EQ("{EMS=E, ONE=5}", agent::formatName(ObjectKey{2, "ONE=5"}, "E"));
  EXPECT_EQ("{EMS=E, OS=5}", agent::formatName(ObjectKey{3, "OS=5"}, "E"));
  EXPECT_EQ("{EMS=E, TopoSubnetwork=a=b}", agent::formatName(ObjectKey{54, "a=b"}, "E"));
  EXPECT_EQ("{EMS=E, ClockTopoLinkId=a=b}", agent::formatName(ObjectKey{201, "a=b"}, "E"));
}

TEST(ManagedObjects, DeriveElementNodesFromTheClassOfTheLastTerm) {
  EXPECT_EQ((NumberedObject{1, 5}), agent::objectOfElementNode("NE=5"));
  EXPECT_EQ((NumberedObject{1, 5}), agent::objectOfElementNode("ONE=6,NE=5"));
  EXPECT_EQ((NumberedObject{2, 6}), agent::objectOfElementNode("NE=5,ONE=6"));
  EXPECT_EQ((NumberedObject{3, 7}), agent::objectOfElementNode("OS=7"));
  EXPECT_EQ((NumberedObject{1, 8}), agent::objectOfElementNode("EQ=8"));
  EXPECT_EQ((NumberedObject{1, 8}), agent::objectOfElementNode("8"));
  EXPECT_EQ((NumberedObject{1, 8}), agent::objectOfElementNode("8 and more"));
}

TEST(ManagedObjects, DeriveElementNodesWithoutAUsableNumber) {
  EXPECT_EQ(std::nullopt, agent::objectOfElementNode("NE=x"));
  EXPECT_EQ((NumberedObject{2, 0}), agent::objectOfElementNode("ONE=x"));
  EXPECT_EQ((NumberedObject{3, 0}), agent::objectOfElementNode("OS="));
  EXPECT_EQ(std::nullopt, agent::objectOfElementNode("EQ=x"));
  EXPECT_EQ(std::nullopt, agent::objectOfElementNode("NE=5,x"));
  EXPECT_EQ(std::nullopt, agent::objectOfElementNode("-3"));
  EXPECT_EQ(std::nullopt, agent::objectOfElementNode("0"));
  EXPECT_EQ((NumberedObject{1, 0}), agent::objectOfElementNode("text"));
}

TEST(ManagedObjects, FindsTheNumberInTheIdOfAnElement) {
  for (const char* id : {"0", "7", "-7", "+7", "007", "2147483647", "NE=7", "=7", "EQ=x,NE=-1"}) {
    EXPECT_TRUE(agent::hasElementNumber(id)) << id;
  }
  for (const char* id :
       {"", "foo", "7x", " 7", "-", "2147483648", "NE=", "NE=7x", "NE=7,", "NE=7,x", "NE=x,NE=7"}) {
    EXPECT_FALSE(agent::hasElementNumber(id)) << id;
  }
}

TEST(ManagedObjects, DeriveClockReferencesFromTheNumberAfterTheEqualsSign) {
  EXPECT_EQ((NumberedObject{1, 5}), agent::objectOfClockReference("NE=5"));
  EXPECT_EQ((NumberedObject{1, 5}), agent::objectOfClockReference("anything=5"));
  EXPECT_EQ((NumberedObject{1, 0}), agent::objectOfClockReference("NE="));
  EXPECT_EQ(std::nullopt, agent::objectOfClockReference("5"));
  EXPECT_EQ(std::nullopt, agent::objectOfClockReference("NE=-5"));
}

TEST(ManagedObjects, HaveNumbersOnlyInNumberedClasses) {
  EXPECT_EQ((NumberedObject{1, 5}), agent::numberedObject({1, "NE=5"}));
  EXPECT_EQ((NumberedObject{2, 5}), agent::numberedObject({2, "ONE=5"}));
  EXPECT_EQ(std::nullopt, agent::numberedObject({54, "NE=5"}));
  EXPECT_EQ(std::nullopt, agent::numberedObject({1, ""}));
  EXPECT_EQ(std::nullopt, agent::numberedObject({1, "NE=x"}));
  EXPECT_EQ(std::nullopt, agent::numberedObject({1, "XX=5"}));
  EXPECT_EQ(std::nullopt, agent::numberedObject({1, "NE:5"}));
  EXPECT_EQ(std::nullopt, agent::numberedObject({2, "NE=55"}));
}

TEST(NumberedObject, HasTheInverseKey) {
  for (const char* id : {"NE=5", "NE=0", "NE=2147483647"}) {
    EXPECT_EQ((agent::ObjectKey{1, id}), agent::keyOf(*agent::numberedObject({1, id})));
  }
  EXPECT_EQ((agent::ObjectKey{2, "ONE=6"}), agent::keyOf({2, 6}));
  EXPECT_EQ((agent::ObjectKey{3, "OS=7"}), agent::keyOf({3, 7}));
}

}  // namespace
