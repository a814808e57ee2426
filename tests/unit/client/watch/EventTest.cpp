// Decoding of notifications with any content.

#include "client/watch/Event.h"

#include <gtest/gtest.h>

#include "orb/idl/notifications.h"
#include "tests/support/WithOrb.h"
#include "tests/unit/client/support/MakeEvents.h"

namespace topoctl {
namespace {

using DecodedEvent = support::WithOrb;

using CosNotification::StructuredEvent;
using TopoManagementManager::Node_T;

// "<nothing>" for an empty optional.
std::string text(const std::optional<std::string>& value) {
  return value.value_or("<nothing>");
}

TEST_F(DecodedEvent, DecodesTheObjectOfACreation) {
  const Event event = decode(creation("17", makeNode("core")));
  EXPECT_EQ(event.kind, EventKind::kCreation);
  EXPECT_EQ(event.type, "NT_OBJECT_CREATION");
  EXPECT_EQ(text(event.notificationId), "17");
  EXPECT_EQ(text(event.objectType), "OT_MULTILAYER_SUBNETWORK");
  EXPECT_EQ(text(event.emsTime), "20261121100307.4Z");
  EXPECT_EQ(text(event.neTime), "");
  EXPECT_EQ(event.edgePointRelated, false);
  ASSERT_TRUE(event.objectName);
  EXPECT_STREQ((*event.objectName)[1].value, "core");
  ASSERT_TRUE(std::holds_alternative<Node_T>(event.object));
  EXPECT_STREQ(std::get<Node_T>(event.object).nativeEMSName, "name of core");
  EXPECT_FALSE(event.isResync);
}

TEST_F(DecodedEvent, DecodesACreatedLink) {
  StructuredEvent received = eventOf("NT_OBJECT_CREATION");
  received.remainder_of_body <<= makeLinks(1)[0];
  const Event event = decode(received);
  ASSERT_TRUE(std::holds_alternative<topologicalLink::TopologicalLink_T>(event.object));
}

TEST_F(DecodedEvent, HasNoObjectForADeletion) {
  const Event event = decode(deletion("18", "core"));
  EXPECT_EQ(event.kind, EventKind::kDeletion);
  EXPECT_TRUE(std::holds_alternative<Unknown>(event.object));
}

TEST_F(DecodedEvent, DecodesTheNewValuesOfAChange) {
  const Event event = decode(renaming("19", "core", "Core"));
  EXPECT_EQ(event.kind, EventKind::kChange);
  ASSERT_EQ(event.attributes.size(), 1U);
  EXPECT_EQ(event.attributes[0].name, "nativeEMSName");
  EXPECT_EQ(std::get<std::string>(event.attributes[0].value), "Core");
}

TEST_F(DecodedEvent, DecodesChangedValuesOfEveryType) {
  StructuredEvent received = eventOf("NT_ATTRIBUTE_VALUE_CHANGE");
  notifications::NVList_T changes;
  changes.length(8);
  changes[0].value <<= CORBA::Any::from_boolean(true);
  changes[1].value <<= CORBA::Long{-5};
  changes[2].value <<= CORBA::ULongLong{18446744073709551615ULL};
  changes[3].value <<= CORBA::Short{-7};
  changes[4].value <<= CORBA::UShort{7};
  changes[5].value <<= makeNode("core").name;
  changes[6].value <<= makeNode("core");
  addData(received, "attributeList") <<= changes;
  const Event event = decode(received);
  ASSERT_EQ(event.attributes.size(), 8U);
  EXPECT_EQ(std::get<bool>(event.attributes[0].value), true);
  EXPECT_EQ(std::get<std::int64_t>(event.attributes[1].value), -5);
  EXPECT_EQ(std::get<std::uint64_t>(event.attributes[2].value), 18446744073709551615ULL);
  EXPECT_EQ(std::get<std::int64_t>(event.attributes[3].value), -7);
  EXPECT_EQ(std::get<std::uint64_t>(event.attributes[4].value), 7U);
  EXPECT_EQ(std::get<globaldefs::NVSList_T>(event.attributes[5].value).length(), 2U);
  EXPECT_TRUE(std::holds_alternative<Unknown>(event.attributes[6].value));
  EXPECT_TRUE(std::holds_alternative<Unknown>(event.attributes[7].value));
}

TEST_F(DecodedEvent, DecodesTheRangeOfLostNotifications) {
  const Event event = decode(lost("5", "9", 3));
  EXPECT_EQ(event.kind, EventKind::kLost);
  EXPECT_EQ(text(event.firstLostId), "5");
  EXPECT_EQ(text(event.lastLostId), "9");
  EXPECT_EQ(event.lostCount, 3U);
}

TEST_F(DecodedEvent, DecodesTheKnownPartsOfAnUnknownType) {
  StructuredEvent received = deletion("20", "core");
  received.header.fixed_header.event_type.type_name = "NT_ALARM";
  const Event event = decode(received);
  EXPECT_EQ(event.kind, EventKind::kOther);
  EXPECT_EQ(event.type, "NT_ALARM");
  EXPECT_EQ(text(event.notificationId), "20");
  received = deletion("20", "core");
  received.header.fixed_header.event_type.domain_name = "other";
  EXPECT_EQ(decode(received).kind, EventKind::kOther);
}

TEST_F(DecodedEvent, AcceptsAnEmptyEvent) {
  const Event event = decode(StructuredEvent());
  EXPECT_EQ(event.kind, EventKind::kOther);
  EXPECT_EQ(event.type, "");
  EXPECT_EQ(text(event.notificationId), "<nothing>");
  EXPECT_FALSE(event.objectName);
}

TEST_F(DecodedEvent, LeavesOutValuesOfUnexpectedTypes) {
  StructuredEvent received = eventOf("NT_OBJECT_CREATION");
  for (const char* const name :
       {"notificationId", "objectName", "objectType", "emsTime", "neTime", "edgePointRelated",
        "attributeList", "firstLostId", "lastLostId", "lostCount", "somethingElse", ""}) {
    addData(received, name) <<= CORBA::Double{1.5};
    addData(received, name);  // a value without a type
  }
  received.remainder_of_body <<= "a text";
  const Event event = decode(received);
  EXPECT_EQ(event.kind, EventKind::kCreation);
  EXPECT_EQ(text(event.notificationId), "<nothing>");
  EXPECT_EQ(text(event.objectType), "<nothing>");
  EXPECT_FALSE(event.objectName || event.edgePointRelated || event.lostCount);
  EXPECT_TRUE(event.attributes.empty());
  EXPECT_TRUE(std::holds_alternative<Unknown>(event.object));
}

// Some ORBs raise an exception while they decode an enumerator that does not exist.
TEST_F(DecodedEvent, LeavesOutOnlyTheMalformedPart) {
  StructuredEvent received = eventOf("NT_OBJECT_DELETION");
  addData(received, "objectType") <<=
      static_cast<notifications::ObjectType_T>(notifications::OT_AID + 1);
  addData(received, "notificationId") <<= "21";
  addData(received, "objectName") <<= makeNode("core").name;
  const Event event = decode(received);
  EXPECT_EQ(event.kind, EventKind::kDeletion);
  EXPECT_EQ(text(event.objectType), "<nothing>");
  EXPECT_EQ(text(event.notificationId), "21");
  EXPECT_TRUE(event.objectName);
}

TEST_F(DecodedEvent, ParsesADecimalIdOnly) {
  EXPECT_EQ(parseId("0"), 0U);
  EXPECT_EQ(parseId("18446744073709551615"), 18446744073709551615ULL);
  for (const char* const id : {"", "x", "1x", "-1", "+1", " 1", "18446744073709551616"}) {
    EXPECT_EQ(parseId(id), std::nullopt) << id;
  }
  EXPECT_EQ(parseId(std::nullopt), std::nullopt);
}

}  // namespace
}  // namespace topoctl
