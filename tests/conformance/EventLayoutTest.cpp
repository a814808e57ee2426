#include "conformance/EventLayout.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "conformance/shared/Names.h"
#include "idl/NotificationLayout.h"
#include "orb/idl/TopoManagementManager.h"
#include "orb/idl/notifications.h"
#include "tests/support/WithOrb.h"

namespace {

using namespace notification_layout;
using conformance::idOf;
using conformance::layoutFaultOf;
using CosNotification::StructuredEvent;
using testing::HasSubstr;

class ConformanceEventLayout : public support::WithOrb {};

CORBA::Any& addField(StructuredEvent& event, const char* name) {
  const CORBA::ULong last = event.filterable_data.length();
  event.filterable_data.length(last + 1);
  event.filterable_data[last].name = CORBA::string_dup(name);
  return event.filterable_data[last].value;
}

StructuredEvent makeEvent(const char* type) {
  StructuredEvent event;
  event.header.fixed_header.event_type.domain_name = CORBA::string_dup(kDomain);
  event.header.fixed_header.event_type.type_name = CORBA::string_dup(type);
  addField(event, kNotificationId) <<= "17";
  addField(event, kObjectName) <<= conformance::objectName("EMS", "TopoSubnetwork", "x");
  addField(event, kObjectType) <<= notifications::OT_MULTILAYER_SUBNETWORK;
  addField(event, kEmsTime) <<= "20261122180000.5Z";
  addField(event, kNeTime) <<= "";
  addField(event, kEdgePointRelated) <<= CORBA::Any::from_boolean(true);
  return event;
}

TEST_F(ConformanceEventLayout, AcceptsTheEventsOfTheLayout) {
  StructuredEvent creation = makeEvent(kObjectCreation);
  creation.remainder_of_body <<= TopoManagementManager::Node_T();
  EXPECT_EQ(layoutFaultOf(creation), "");
  EXPECT_EQ(layoutFaultOf(makeEvent(kObjectDeletion)), "");
  StructuredEvent change = makeEvent(kAttributeValueChange);
  addField(change, kAttributeList) <<= notifications::NVList_T();
  EXPECT_EQ(layoutFaultOf(change), "");
}

TEST_F(ConformanceEventLayout, NamesMissingAdditionalAndSwappedFields) {
  EXPECT_THAT(layoutFaultOf(StructuredEvent()), HasSubstr("the domain is not "));
  EXPECT_THAT(layoutFaultOf(makeEvent(kAttributeValueChange)), HasSubstr("attributeList"));
  StructuredEvent more = makeEvent(kObjectDeletion);
  addField(more, "more") <<= "x";
  EXPECT_THAT(layoutFaultOf(more), HasSubstr("edgePointRelated more"));
  StructuredEvent swapped = makeEvent(kObjectDeletion);
  std::swap(swapped.filterable_data[3], swapped.filterable_data[4]);
  EXPECT_THAT(layoutFaultOf(swapped), HasSubstr("neTime emsTime"));
}

TEST_F(ConformanceEventLayout, NamesFieldsOfAnotherType) {
  for (CORBA::ULong i = 0; i < 6; ++i) {
    StructuredEvent event = makeEvent(kObjectDeletion);
    event.filterable_data[i].value <<= 3.5;
    EXPECT_THAT(layoutFaultOf(event), HasSubstr(event.filterable_data[i].name.in()));
  }
}

TEST_F(ConformanceEventLayout, NamesWrongValues) {
  StructuredEvent type = makeEvent(kObjectDeletion);
  type.filterable_data[2].value <<= notifications::OT_EMS;
  EXPECT_THAT(layoutFaultOf(type), HasSubstr("objectType"));
  StructuredEvent time = makeEvent(kObjectDeletion);
  time.filterable_data[3].value <<= "2026-11-22";
  EXPECT_THAT(layoutFaultOf(time), HasSubstr("emsTime"));
  StructuredEvent named = makeEvent(kObjectDeletion);
  named.header.fixed_header.event_name = CORBA::string_dup("x");
  EXPECT_THAT(layoutFaultOf(named), HasSubstr("event name"));
  EXPECT_EQ(layoutFaultOf(makeEvent(kObjectCreation)), "the body is empty");
  StructuredEvent full = makeEvent(kObjectDeletion);
  full.remainder_of_body <<= "x";
  EXPECT_EQ(layoutFaultOf(full), "the body is not empty");
}

TEST_F(ConformanceEventLayout, ReadsNotificationIdsBelow2To63) {
  StructuredEvent event = makeEvent(kObjectDeletion);
  EXPECT_EQ(idOf(event), 17);
  event.filterable_data[0].value <<= "9223372036854775807";
  EXPECT_EQ(idOf(event), 9223372036854775807LL);
  for (const char* text : {"", "-1", "1x", " 1", "9223372036854775808"}) {
    event.filterable_data[0].value <<= text;
    EXPECT_EQ(idOf(event), -1) << text;
  }
  EXPECT_EQ(idOf(StructuredEvent()), -1);
}

}  // namespace
