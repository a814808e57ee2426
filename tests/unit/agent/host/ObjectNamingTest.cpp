// Conversion of TMF names to domain ids and back.

#include "agent/host/ObjectNaming.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>
#include <vector>

#include "agent/base/FailureCodes.h"
#include "tests/support/Pairs.h"
#include "tests/unit/agent/support/NetworkFiles.h"

namespace {

globaldefs::NVSList_T objectName(const std::string& objectClass, const std::string& value) {
  return nameOf({{"EMS", "ems"}, {objectClass, value}});
}

// Names that no object can have.
std::vector<globaldefs::NVSList_T> malformedNames() {
  std::vector<globaldefs::NVSList_T> names = {
      nameOf({}),
      nameOf({{"EMS", "ems"}}),
      nameOf({{"ManagedElement", "1"}}),
      nameOf({{"", ""}, {"", ""}}),
      nameOf({{"EMS", "ems"}, {"ManagedElement", "1"}, {"PTP", "1"}}),
      nameOf({{"EMS", "other"}, {"ManagedElement", "1"}}),
      nameOf({{"EMS", ""}, {"ManagedElement", "1"}}),
      nameOf({{"ems", "ems"}, {"ManagedElement", "1"}}),
      nameOf({{"ManagedElement", "1"}, {"EMS", "ems"}}),
      objectName("managedElement", "1"),
      objectName("NE", "1"),
      objectName("", "1"),
      objectName("TopoSubnetwork", ""),
      objectName(longText('x'), "1"),
      objectName("ManagedElement", longText('1')),
      nameOf({{"EMS", longText('x')}, {"ManagedElement", "1"}}),
      nameOf(Pairs(1000000, {"EMS", "ems"})),
  };
  for (const char* objectClass : {"ManagedElement", "ONE", "OS"}) {
    for (const char* number : {"", "-1", "-0", "+1", "01", "00", " 1", "1 ", "1x", "x",
                               "2147483648", "99999999999999999999", "1.0", "0x1"}) {
      names.push_back(objectName(objectClass, number));
    }
  }
  return names;
}

class NamingTest : public testing::Test {
 protected:
  std::string indexOf(const globaldefs::NVSList_T& name) {
    std::string id = "untouched";
    EXPECT_EQ(agent::kSuccess, naming_.Name2Index(id, name));
    return id;
  }

  const agent::NetworkModel model_{sampleNetwork()};
  agent::ObjectNaming naming_{"ems", model_};
};

TEST_F(NamingTest, NamesNumberedObjectsByClassAndNumber) {
  globaldefs::NVSList_T name;
  NS_CORBA::DomainObjectKey key{0, 5};
  std::int32_t number = 0;
  EXPECT_EQ(agent::kSuccess, naming_.ConvertNEIndexToName(name, key));
  EXPECT_EQ((Pairs{{"EMS", "ems"}, {"ManagedElement", "5"}}), pairsOf(name));
  EXPECT_EQ(agent::kSuccess, naming_.ConvertONEIndexToName(name, key));
  EXPECT_EQ((Pairs{{"EMS", "ems"}, {"ONE", "5"}}), pairsOf(name));
  EXPECT_EQ(agent::kSuccess, naming_.ConvertOSIndexToName(name, number));
  EXPECT_EQ((Pairs{{"EMS", "ems"}, {"OS", "0"}}), pairsOf(name));
}

TEST_F(NamingTest, NamesSubnetworksByTheirId) {
  globaldefs::NVSList_T name = nameOf(Pairs(5, {"old", "old"}));
  EXPECT_EQ(agent::kSuccess, naming_.ConvertTopoNodeIdToName(name, "nowhere / Köln"));
  EXPECT_EQ((Pairs{{"EMS", "ems"}, {"TopoSubnetwork", "nowhere / Köln"}}), pairsOf(name));
}

TEST_F(NamingTest, HasNoNamesForNegativeNumbers) {
  for (std::int32_t number : {-1, std::numeric_limits<std::int32_t>::min()}) {
    NS_CORBA::DomainObjectKey key{0, number};
    globaldefs::NVSList_T name = nameOf({{"old", "old"}});
    EXPECT_EQ(agent::kInvalidName, naming_.ConvertNEIndexToName(name, key));
    EXPECT_EQ(0U, name.length());
    EXPECT_EQ(agent::kInvalidName, naming_.ConvertONEIndexToName(name, key));
    EXPECT_EQ(0U, name.length());
    EXPECT_EQ(agent::kInvalidName, naming_.ConvertOSIndexToName(name, number));
    EXPECT_EQ(0U, name.length());
  }
}

TEST_F(NamingTest, HasNoNameForAnEmptyIdOrAnIdWithNul) {
  globaldefs::NVSList_T name = nameOf({{"old", "old"}});
  EXPECT_EQ(agent::kInvalidName, naming_.ConvertTopoNodeIdToName(name, ""));
  EXPECT_EQ(0U, name.length());
  EXPECT_EQ(agent::kInvalidName, naming_.ConvertTopoNodeIdToName(name, std::string("a\0b", 3)));
  EXPECT_EQ(0U, name.length());
}

TEST_F(NamingTest, ReportsEachObjectWithoutAName) {
  std::vector<std::string> lines;
  agent::ObjectNaming naming("ems", model_,
                             [&lines](const std::string& line) { lines.push_back(line); });
  globaldefs::NVSList_T name;
  NS_CORBA::DomainObjectKey key{0, -5};
  naming.ConvertNEIndexToName(name, key);
  naming.ConvertTopoNodeIdToName(name, "");
  naming.ConvertTopoNodeIdToName(name, std::string("a\0b", 3));
  const std::vector<std::string> expected = {
      R"(no name for ManagedElement "-5": the number is negative)",
      R"(no name for TopoSubnetwork "": the id is empty)",
      R"(no name for TopoSubnetwork "a\x00b": the id contains a NUL character)"};
  EXPECT_EQ(expected, lines);
}

TEST_F(NamingTest, TurnsNamesIntoDomainIds) {
  EXPECT_EQ("NE=0", indexOf(objectName("ManagedElement", "0")));
  EXPECT_EQ("NE=2147483647", indexOf(objectName("ManagedElement", "2147483647")));
  EXPECT_EQ("ONE=5", indexOf(objectName("ONE", "5")));
  EXPECT_EQ("OS=5", indexOf(objectName("OS", "5")));
  EXPECT_EQ("not in the model", indexOf(objectName("TopoSubnetwork", "not in the model")));
}

TEST_F(NamingTest, RejectsMalformedNamesAndKeepsTheId) {
  for (const auto& name : malformedNames()) {
    std::string id = "untouched";
    EXPECT_EQ(agent::kInvalidName, naming_.Name2Index(id, name));
    EXPECT_EQ("untouched", id);
  }
}

TEST_F(NamingTest, AcceptsVeryLongIds) {
  const std::string id = longText('x');
  EXPECT_EQ(id, indexOf(objectName("TopoSubnetwork", id)));
}

TEST_F(NamingTest, TreatsNullTextsAsEmpty) {
  globaldefs::NVSList_T name;
  name.length(2);
  std::string id;
  EXPECT_EQ(agent::kInvalidName, naming_.Name2Index(id, name));
  EXPECT_EQ(agent::kNoObjectType, naming_.GetObjectType(name));
}

TEST_F(NamingTest, GivesATypeToExistingSubnetworksOnly) {
  EXPECT_EQ(54, naming_.GetObjectType(objectName("TopoSubnetwork", "root")));
  EXPECT_EQ(0, naming_.GetObjectType(objectName("TopoSubnetwork", "nowhere")));
  EXPECT_EQ(0, naming_.GetObjectType(objectName("TopoSubnetwork", "NE=5")));  // an element
}

TEST_F(NamingTest, GivesOtherObjectsTheTypeOfTheirClass) {
  EXPECT_EQ(agent::kManagedElementType, naming_.GetObjectType(objectName("ManagedElement", "9")));
  EXPECT_EQ(agent::kOpticalElementType, naming_.GetObjectType(objectName("ONE", "9")));
  EXPECT_EQ(agent::kManagementSystemType, naming_.GetObjectType(objectName("OS", "9")));
}

TEST_F(NamingTest, GivesMalformedNamesNoType) {
  for (const auto& name : malformedNames()) {
    EXPECT_EQ(0, naming_.GetObjectType(name));
  }
}

TEST_F(NamingTest, FillsTheStoredLabel) {
  NS_CORBA::ObjectLabelInfo info{"old", "old", "old", "old"};
  EXPECT_EQ(agent::kSuccess, naming_.GetObjectLabelInfo(info, "z", 201));
  EXPECT_EQ("stored", info.userLabel);
  EXPECT_EQ("", info.label2 + info.label3 + info.label4);
}

TEST_F(NamingTest, FillsAnEmptyLabelForAnObjectWithoutLabel) {
  NS_CORBA::ObjectLabelInfo info{"old", "old", "old", "old"};
  EXPECT_EQ(agent::kSuccess, naming_.GetObjectLabelInfo(info, "unknown", 201));
  EXPECT_EQ("", info.userLabel + info.label2 + info.label3 + info.label4);
}

TEST_F(NamingTest, InvertsEveryConversionOfANumber) {
  std::mt19937 random(42);
  std::uniform_int_distribution<std::int32_t> numbers(0);
  for (int i = 0; i < 10000; ++i) {
    std::int32_t number = i < 100 ? i : numbers(random);
    NS_CORBA::DomainObjectKey key{0, number};
    globaldefs::NVSList_T name;
    ASSERT_EQ(agent::kSuccess, naming_.ConvertNEIndexToName(name, key));
    ASSERT_EQ("NE=" + std::to_string(number), indexOf(name));
    ASSERT_EQ(agent::kSuccess, naming_.ConvertONEIndexToName(name, key));
    ASSERT_EQ("ONE=" + std::to_string(number), indexOf(name));
    ASSERT_EQ(agent::kSuccess, naming_.ConvertOSIndexToName(name, number));
    ASSERT_EQ("OS=" + std::to_string(number), indexOf(name));
  }
}

TEST_F(NamingTest, InvertsEveryConversionOfAnId) {
  std::mt19937 random(42);
  std::uniform_int_distribution<int> bytes(1, 255);
  for (int i = 0; i < 10000; ++i) {
    std::string id(1 + random() % 40, ' ');
    for (char& byte : id) {
      byte = static_cast<char>(bytes(random));
    }
    globaldefs::NVSList_T name;
    ASSERT_EQ(agent::kSuccess, naming_.ConvertTopoNodeIdToName(name, id));
    ASSERT_EQ(id, indexOf(name));
  }
}

}  // namespace
