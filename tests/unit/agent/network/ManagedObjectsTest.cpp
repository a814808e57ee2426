// What names mean, how they are shown, and which object a record is part of.

#include "agent/network/ManagedObjects.h"

#include <gtest/gtest.h>

#include "tests/unit/agent/support/Names.h"
#include "tests/unit/agent/support/NetworkFiles.h"

namespace {

using agent::ObjectKey;

std::string describe(const ObjectKey& key) {
  return std::to_string(key.type) + ' ' + key.id;
}

// The key of a name, or what is wrong with it.
std::string meaningOf(const Pairs& pairs) {
  std::string problem;
  const auto key = agent::parseObjectName(nameOf(pairs), "E", problem);
  return key ? describe(*key) : problem;
}

std::string meaningOf(const std::string& objectClass, const std::string& value) {
  return meaningOf({{"EMS", "E"}, {objectClass, value}});
}

std::string describe(const std::optional<agent::NumberedObject>& object) {
  return object ? std::to_string(object->type) + ' ' + std::to_string(object->number) : "none";
}

std::string objectOfNode(const std::string& id) {
  return describe(agent::objectOfElementNode(id));
}

std::string objectOfReference(const std::string& reference) {
  return describe(agent::objectOfClockReference(reference));
}

TEST(ManagedObjects, ParseEveryClassOfNames) {
  EXPECT_EQ("1 NE=5", meaningOf("ManagedElement", "5"));
  EXPECT_EQ("2 ONE=0", meaningOf("ONE", "0"));
  EXPECT_EQ("3 OS=2147483647", meaningOf("OS", "2147483647"));
  EXPECT_EQ("54 a/b", meaningOf("TopoSubnetwork", "a/b"));
  EXPECT_EQ("201 k", meaningOf("ClockTopoLinkId", "k"));
  EXPECT_EQ("201 ", meaningOf("ClockTopoLinkId", ""));
}

TEST(ManagedObjects, ReportTheProblemOfAMalformedName) {
  EXPECT_EQ("it has 0 pairs instead of 2", meaningOf(Pairs{}));
  EXPECT_EQ("it has 1 pair instead of 2", meaningOf({{"EMS", "E"}}));
  EXPECT_EQ("it has 1000000 pairs instead of 2", meaningOf(Pairs(1000000, {"EMS", "E"})));
  EXPECT_EQ("its first pair is not the \"EMS\"", meaningOf({{"OS", "1"}, {"EMS", "E"}}));
  EXPECT_EQ("the \"EMS\" is not \"E\"", meaningOf({{"EMS", "e"}, {"OS", "1"}}));
  EXPECT_EQ("\"NE\" is no class of objects", meaningOf("NE", "1"));
  EXPECT_EQ("the value of \"OS\" is no number of an object", meaningOf("OS", "01"));
  EXPECT_EQ("the value of \"OS\" is no number of an object", meaningOf("OS", longText('1')));
  EXPECT_EQ("the value of \"TopoSubnetwork\" is empty", meaningOf("TopoSubnetwork", ""));
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
  EXPECT_EQ("1 5", objectOfNode("NE=5"));
  EXPECT_EQ("1 5", objectOfNode("ONE=6,NE=5"));
  EXPECT_EQ("2 6", objectOfNode("NE=5,ONE=6"));
  EXPECT_EQ("3 7", objectOfNode("OS=7"));
  EXPECT_EQ("1 8", objectOfNode("EQ=8"));
  EXPECT_EQ("1 8", objectOfNode("8"));
  EXPECT_EQ("1 8", objectOfNode("8 and more"));
}

TEST(ManagedObjects, DeriveElementNodesWithoutAUsableNumber) {
  EXPECT_EQ("none", objectOfNode("NE=x"));
  EXPECT_EQ("2 0", objectOfNode("ONE=x"));
  EXPECT_EQ("3 0", objectOfNode("OS="));
  EXPECT_EQ("none", objectOfNode("EQ=x"));
  EXPECT_EQ("none", objectOfNode("NE=5,x"));
  EXPECT_EQ("none", objectOfNode("-3"));
  EXPECT_EQ("none", objectOfNode("0"));
  EXPECT_EQ("1 0", objectOfNode("text"));
}

TEST(ManagedObjects, DeriveClockReferencesFromTheNumberAfterTheEqualsSign) {
  EXPECT_EQ("1 5", objectOfReference("NE=5"));
  EXPECT_EQ("1 5", objectOfReference("anything=5"));
  EXPECT_EQ("1 0", objectOfReference("NE="));
  EXPECT_EQ("none", objectOfReference("5"));
  EXPECT_EQ("none", objectOfReference("NE=-5"));
}

TEST(ManagedObjects, HaveNumbersOnlyInNumberedClasses) {
  EXPECT_EQ("1 5", describe(agent::numberedObject({1, "NE=5"})));
  EXPECT_EQ("2 5", describe(agent::numberedObject({2, "ONE=5"})));
  EXPECT_EQ("none", describe(agent::numberedObject({54, "NE=5"})));
  EXPECT_EQ("none", describe(agent::numberedObject({1, ""})));
  EXPECT_EQ("none", describe(agent::numberedObject({1, "NE=x"})));
  EXPECT_EQ("none", describe(agent::numberedObject({1, "XX=5"})));
  EXPECT_EQ("none", describe(agent::numberedObject({1, "NE:5"})));
  EXPECT_EQ("none", describe(agent::numberedObject({2, "NE=55"})));
}

TEST(NumberedObject, HasTheInverseKey) {
  for (const char* id : {"NE=5", "NE=0", "NE=2147483647"}) {
    EXPECT_EQ((agent::ObjectKey{1, id}), agent::keyOf(*agent::numberedObject({1, id})));
  }
  EXPECT_EQ((agent::ObjectKey{2, "ONE=6"}), agent::keyOf({2, 6}));
  EXPECT_EQ((agent::ObjectKey{3, "OS=7"}), agent::keyOf({3, 7}));
}

}  // namespace
