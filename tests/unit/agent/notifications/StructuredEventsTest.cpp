#include "agent/notifications/StructuredEvents.h"

#include <gtest/gtest.h>
#include <malloc.h>

#include <memory>
#include <string>
#include <vector>

#include <cstdlib>
#include <ctime>

#include "agent/network/ManagedObjects.h"
#include "tests/support/OtherTimeZone.h"
#include "tests/support/WithOrb.h"
#include "tests/unit/agent/notifications/Events.h"

namespace {

using StructuredEvents = support::WithOrb;

using namespace notification_tests;

CORBA::Any text(const char* value) {
  CORBA::Any any;
  any <<= value;
  return any;
}

TEST_F(StructuredEvents, OfACreationContainTheObject) {
  const auto event =
      agent::objectCreation(objectName("TopoSubnetwork", "core"), text("the object"), true);
  agent::stamp(*event, 17, someTime());
  EXPECT_EQ((EventParts{"tmf_mtnm",
                        "NT_OBJECT_CREATION",
                        "",
                        0,
                        {{"notificationId", {"string", "17"}},
                         {"objectName", {"name", "{EMS=E, TopoSubnetwork=core}"}},
                         {"objectType", {"type", "2"}},
                         {"emsTime", {"string", "20240229235958.7Z"}},
                         {"neTime", {"string", ""}},
                         {"edgePointRelated", {"boolean", "true"}}},
                        {"string", "the object"}}),
            partsOf(*event));
}

TEST_F(StructuredEvents, OfADeletionHaveNoBody) {
  const auto event = agent::objectDeletion(objectName("ManagedElement", "7"), false);
  agent::stamp(*event, 18446744073709551615U, someTime());
  EXPECT_EQ((EventParts{"tmf_mtnm",
                        "NT_OBJECT_DELETION",
                        "",
                        0,
                        {{"notificationId", {"string", "18446744073709551615"}},
                         {"objectName", {"name", "{EMS=E, ManagedElement=7}"}},
                         {"objectType", {"type", "1"}},
                         {"emsTime", {"string", "20240229235958.7Z"}},
                         {"neTime", {"string", ""}},
                         {"edgePointRelated", {"boolean", "false"}}},
                        kNoValue}),
            partsOf(*event));
}

TEST_F(StructuredEvents, OfAChangeListTheAttributes) {
  const auto event = agent::attributeValueChange(
      objectName("ONE", "7"), attribute("nativeEMSName", "Z\xC3\xBCrich"), true, nullptr);
  agent::stamp(*event, 1, someTime());
  EXPECT_EQ((EventParts{"tmf_mtnm",
                        "NT_ATTRIBUTE_VALUE_CHANGE",
                        "",
                        0,
                        {{"notificationId", {"string", "1"}},
                         {"objectName", {"name", "{EMS=E, ONE=7}"}},
                         {"objectType", {"type", "1"}},
                         {"emsTime", {"string", "20240229235958.7Z"}},
                         {"neTime", {"string", ""}},
                         {"edgePointRelated", {"boolean", "true"}},
                         {"attributeList", {"attributes", "[nativeEMSName=string Z\xC3\xBCrich]"}}},
                        kNoValue}),
            partsOf(*event));
}

TEST_F(StructuredEvents, OfAChangeMayHaveABody) {
  const CORBA::Any body = text("more");
  const auto event =
      agent::attributeValueChange(objectName("ONE", "7"), attribute("a", "b"), true, &body);
  EXPECT_EQ((Value{"string", "more"}), partsOf(*event).body);
}

TEST_F(StructuredEvents, OfAGapContainTheRangeAndTheCount) {
  const auto event = agent::gapReport({4, 19, 12}, someTime());
  EXPECT_EQ((EventParts{"tmf_mtnm",
                        "NT_EVENTS_LOST",
                        "",
                        0,
                        {{"firstLostId", {"string", "4"}},
                         {"lastLostId", {"string", "19"}},
                         {"lostCount", {"ulonglong", "12"}},
                         {"emsTime", {"string", "20240229235958.7Z"}}},
                        kNoValue}),
            partsOf(*event));
}

TEST_F(StructuredEvents, CutTheTimeToTenths) {
  const auto at = [](std::int64_t milliseconds) {
    return agent::emsTimeOf(agent::EventTime(std::chrono::milliseconds(milliseconds)));
  };
  EXPECT_EQ("19700101000000.0Z", at(0));
  EXPECT_EQ("19700101000000.0Z", at(99));
  EXPECT_EQ("19700101000000.9Z", at(999));
  EXPECT_EQ("19691231235959.9Z", at(-1));
}

TEST_F(StructuredEvents, ContainTheTimeInUtc) {
  const support::OtherTimeZone zone;
  EXPECT_EQ("20240229235958.7Z", agent::emsTimeOf(someTime()));
}

TEST_F(StructuredEvents, HaveTheTypeOfTheClassInTheLastPair) {
  const auto typeOf = [](const char* objectClass) {
    return agent::objectTypeOf(objectName(objectClass, "1"));
  };
  EXPECT_EQ(notifications::OT_MANAGED_ELEMENT, typeOf("ManagedElement"));
  EXPECT_EQ(notifications::OT_MANAGED_ELEMENT, typeOf("ONE"));
  EXPECT_EQ(notifications::OT_MULTILAYER_SUBNETWORK, typeOf("TopoSubnetwork"));
  EXPECT_EQ(notifications::OT_TOPOLOGICAL_LINK, typeOf("ClockTopoLinkId"));
  EXPECT_EQ(notifications::OT_EMS, typeOf("OS"));
  EXPECT_EQ(notifications::OT_EMS, typeOf("EMS"));
  EXPECT_EQ(notifications::OT_EMS, typeOf("managedelement"));
  globaldefs::NVSList_T longer = objectName("ManagedElement", "1");
  longer.length(3);
  longer[2].name = CORBA::string_dup("TopoSubnetwork");
  EXPECT_EQ(notifications::OT_MULTILAYER_SUBNETWORK, agent::objectTypeOf(longer));
}

TEST_F(StructuredEvents, WithoutANameHaveTheTypeOfTheSystem) {
  const auto event = agent::objectDeletion({}, false);
  EXPECT_EQ((Value{"name", "{}"}), partsOf(*event).at("objectName"));
  EXPECT_EQ((Value{"type", "0"}), partsOf(*event).at("objectType"));
}

// The memory of an event as the allocator counts it. 0 under sanitizers, whose allocators do not
// count, so that the comparison then always succeeds.
template <typename Make>
std::size_t heapOf(Make make) {
  constexpr std::size_t kMany = 20;
  std::vector<std::unique_ptr<CosNotification::StructuredEvent>> events;
  events.reserve(kMany);
  const struct mallinfo2 before = mallinfo2();
  for (std::size_t i = 0; i < kMany; ++i) {
    events.push_back(make());
    agent::stamp(*events.back(), 1790000000000000U, someTime());
  }
  const struct mallinfo2 after = mallinfo2();
  return (after.uordblks + after.hblkhd - before.uordblks - before.hblkhd) / kMany;
}

template <typename Make>
void expectEstimateCovers(Make make) {
  const auto event = make();
  EXPECT_LE(heapOf(make), agent::estimatedBytes(*event));
}

TEST_F(StructuredEvents, AreEstimatedAtTwiceALongText) {
  const std::string text(std::size_t{1} << 20, 'x');
  const auto event =
      agent::attributeValueChange({}, attribute("label", text.c_str()), true, nullptr);
  EXPECT_LE(2 * text.size(), agent::estimatedBytes(*event));
  EXPECT_GE(2 * text.size() + 8192, agent::estimatedBytes(*event));
}

globaldefs::NVSList_T pairs(CORBA::ULong count, const std::string& text) {
  globaldefs::NVSList_T list;
  list.length(count);
  for (CORBA::ULong i = 0; i < count; ++i) {
    list[i].name = CORBA::string_dup(text.c_str());
    list[i].value = CORBA::string_dup(text.c_str());
  }
  return list;
}

TEST_F(StructuredEvents, TakeNoMoreMemoryThanTheirEstimate) {
  for (const std::size_t length : {0, 1, 30, 2000}) {
    const std::string text(length, 'x');
    for (const CORBA::ULong count : {0, 1, 30}) {
      SCOPED_TRACE(std::to_string(count) + " of " + std::to_string(length));
      const globaldefs::NVSList_T name = pairs(count, text);
      notifications::NVList_T attributes;
      attributes.length(count);
      for (CORBA::ULong i = 0; i < count; ++i) {
        attributes[i].value <<= text.c_str();
      }
      CORBA::Any object;
      object <<= name;
      expectEstimateCovers([&] { return agent::objectDeletion(name, true); });
      expectEstimateCovers([&] { return agent::objectCreation(name, object, true); });
      expectEstimateCovers(
          [&] { return agent::attributeValueChange(name, attributes, true, &object); });
    }
  }
}

}  // namespace
