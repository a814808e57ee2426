#include "conformance/EventLayout.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <map>

#include "conformance/shared/Verdict.h"
#include "idl/NotificationLayout.h"
#include "orb/idl/globaldefs.h"
#include "orb/idl/notifications.h"

namespace conformance {
namespace {

namespace layout = notification_layout;

using CosNotification::StructuredEvent;

std::string typeOf(const StructuredEvent& event) {
  return event.header.fixed_header.event_type.type_name.in();
}

std::string fieldsOf(const StructuredEvent& event) {
  std::string names;
  for (CORBA::ULong i = 0; i < event.filterable_data.length(); ++i) {
    names += (i == 0 ? "" : " ") + std::string(event.filterable_data[i].name.in());
  }
  return names;
}

// REQUIRES: the event has the field.
std::string textOf(const StructuredEvent& event, const char* name) {
  const char* text = nullptr;
  require(*fieldOf(event, name) >>= text, std::string(name) + " is no string");
  return text;
}

notifications::ObjectType_T objectTypeOf(const globaldefs::NVSList_T& name) {
  static const std::map<std::string, notifications::ObjectType_T> types = {
      {"ManagedElement", notifications::OT_MANAGED_ELEMENT},
      {"ONE", notifications::OT_MANAGED_ELEMENT},
      {"TopoSubnetwork", notifications::OT_MULTILAYER_SUBNETWORK},
      {"ClockTopoLinkId", notifications::OT_TOPOLOGICAL_LINK}};
  const CORBA::ULong length = name.length();
  const auto type = length == 0 ? types.end() : types.find(name[length - 1].name.in());
  return type == types.end() ? notifications::OT_EMS : type->second;
}

void requireHeader(const StructuredEvent& event) {
  const auto& header = event.header.fixed_header;
  require(header.event_type.domain_name.in() == std::string(layout::kDomain),
          std::string("the domain is not ") + layout::kDomain);
  require(header.event_name.in()[0] == '\0', "the event name is not empty");
}

// All fields that a later function reads.
void requireFields(const StructuredEvent& event) {
  std::string expected;
  for (const char* name : {layout::kNotificationId, layout::kObjectName, layout::kObjectType,
                           layout::kEmsTime, layout::kNeTime, layout::kEdgePointRelated}) {
    expected += (expected.empty() ? "" : " ") + std::string(name);
  }
  if (typeOf(event) == layout::kAttributeValueChange) {
    expected += ' ' + std::string(layout::kAttributeList);
  }
  const std::string fields = fieldsOf(event);
  require(fields == expected, "the fields are \"" + fields + "\", not \"" + expected + '"');
}

void requireObject(const StructuredEvent& event) {
  const globaldefs::NVSList_T* name = nullptr;
  require(*fieldOf(event, layout::kObjectName) >>= name, "objectName is no NVSList_T");
  notifications::ObjectType_T type{};
  require(*fieldOf(event, layout::kObjectType) >>= type, "objectType is no ObjectType_T");
  require(type == objectTypeOf(*name), "objectType is not that of the class of the object");
}

// Whether the text has the form yyyyMMddHHmmss.sZ.
bool isTime(const std::string& text) {
  std::string form = text;
  std::replace_if(
      form.begin(), form.end(), [](char c) { return c >= '0' && c <= '9'; }, '0');
  return form == "00000000000000.0Z";
}

void requireTimes(const StructuredEvent& event) {
  const std::string time = textOf(event, layout::kEmsTime);
  require(isTime(time), "emsTime is \"" + time + "\", not yyyyMMddHHmmss.sZ");
  require(textOf(event, layout::kNeTime).empty(), "neTime is not empty");
}

void requireContent(const StructuredEvent& event) {
  CORBA::Boolean isEdge = false;
  require(*fieldOf(event, layout::kEdgePointRelated) >>= CORBA::Any::to_boolean(isEdge),
          "edgePointRelated is no boolean");
  const CORBA::Any* const value = fieldOf(event, layout::kAttributeList);
  const notifications::NVList_T* attributes = nullptr;
  require(value == nullptr || (*value >>= attributes), "attributeList is no NVList_T");
  const CORBA::TypeCode_var body = event.remainder_of_body.type();
  const bool isEmpty = body->kind() == CORBA::tk_null || body->kind() == CORBA::tk_void;
  const bool isCreation = typeOf(event) == layout::kObjectCreation;
  require(isEmpty != isCreation, isCreation ? "the body is empty" : "the body is not empty");
}

}  // namespace

const CORBA::Any* fieldOf(const StructuredEvent& event, const char* name) {
  for (CORBA::ULong i = 0; i < event.filterable_data.length(); ++i) {
    if (std::strcmp(event.filterable_data[i].name.in(), name) == 0) {
      return &event.filterable_data[i].value;
    }
  }
  return nullptr;
}

long long idOf(const StructuredEvent& event) {
  const CORBA::Any* const value = fieldOf(event, layout::kNotificationId);
  const char* text = nullptr;
  if (value == nullptr || !(*value >>= text) || text[0] == '-') {
    return -1;
  }
  long long id = -1;
  const char* const end = text + std::strlen(text);
  const auto [rest, failure] = std::from_chars(text, end, id);
  return failure == std::errc() && rest == end ? id : -1;
}

std::string layoutFaultOf(const StructuredEvent& event) try {
  requireHeader(event);
  requireFields(event);
  require(idOf(event) >= 0, "notificationId is no string with a decimal number below 2^63");
  requireObject(event);
  requireTimes(event);
  requireContent(event);
  return "";
} catch (const Broken& fault) {
  return fault.what();
}

}  // namespace conformance
