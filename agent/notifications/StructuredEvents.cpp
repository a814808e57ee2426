#include "agent/notifications/StructuredEvents.h"

#include <array>
#include <cstdio>
#include <ctime>
#include <string_view>

#include "agent/network/ManagedObjects.h"
#include "idl/NotificationLayout.h"
#include "orb/orb.h"

namespace agent {
namespace {

namespace layout = notification_layout;

// Indexes of the fields that stamp() sets.
constexpr CORBA::ULong kIdField = 0;
constexpr CORBA::ULong kTimeField = 3;

// The memory of an event is the sum of:
//   - a fixed size,
//   - a size for each attribute of the list: a value has about five allocations,
//   - a multiple of the encoded values: each short text has an allocation.
constexpr std::size_t kBytesOfAnyEvent = 1024;
constexpr std::size_t kBytesOfAnAttribute = 256;
constexpr std::size_t kBytesOfAnEncodedByte = 2;

using CosNotification::StructuredEvent;

std::unique_ptr<StructuredEvent> emptyEvent(const char* type) {
  auto event = std::make_unique<StructuredEvent>();
  event->header.fixed_header.event_type.domain_name = CORBA::string_dup(layout::kDomain);
  event->header.fixed_header.event_type.type_name = CORBA::string_dup(type);
  event->header.fixed_header.event_name = CORBA::string_dup("");
  return event;
}

// Appends a field without a value. Returns the value for the caller to set.
CORBA::Any& addField(StructuredEvent& event, const char* name) {
  CosNotification::FilterableEventBody& fields = event.filterable_data;
  const CORBA::ULong last = fields.length();
  fields.length(last + 1);
  fields[last].name = CORBA::string_dup(name);
  return fields[last].value;
}

void setText(CORBA::Any& value, const std::string& text) {
  value <<= text.c_str();
}

std::unique_ptr<StructuredEvent> eventAbout(const char* type, const globaldefs::NVSList_T& name,
                                            bool edgePointRelated) {
  std::unique_ptr<StructuredEvent> event = emptyEvent(type);
  setText(addField(*event, layout::kNotificationId), "");
  addField(*event, layout::kObjectName) <<= name;
  addField(*event, layout::kObjectType) <<= objectTypeOf(name);
  setText(addField(*event, layout::kEmsTime), "");
  setText(addField(*event, layout::kNeTime), "");
  addField(*event, layout::kEdgePointRelated) <<= CORBA::Any::from_boolean(edgePointRelated);
  return event;
}

}  // namespace

std::string emsTimeOf(EventTime time) {
  using std::chrono::system_clock;
  const auto second = std::chrono::floor<std::chrono::seconds>(time);
  const auto tenths = std::chrono::duration_cast<std::chrono::milliseconds>(time - second) / 100;
  const std::time_t seconds = system_clock::to_time_t(second);
  std::tm utc{};
  gmtime_r(&seconds, &utc);
  std::array<char, 32> text{};
  std::strftime(text.data(), text.size(), "%Y%m%d%H%M%S", &utc);
  return std::string(text.data()) + "." + std::to_string(tenths.count()) + "Z";
}

notifications::ObjectType_T objectTypeOf(const globaldefs::NVSList_T& name) {
  if (name.length() == 0) {
    return notifications::OT_EMS;
  }
  const std::string_view objectClass = name[name.length() - 1].name.in();
  if (objectClass == tmf::kManagedElement || objectClass == tmf::kOpticalElement) {
    return notifications::OT_MANAGED_ELEMENT;
  }
  if (objectClass == tmf::kTopoSubnetwork) {
    return notifications::OT_MULTILAYER_SUBNETWORK;
  }
  if (objectClass == tmf::kClockLink) {
    return notifications::OT_TOPOLOGICAL_LINK;
  }
  return notifications::OT_EMS;
}

std::unique_ptr<StructuredEvent> objectCreation(const globaldefs::NVSList_T& name,
                                                const CORBA::Any& object, bool edgePointRelated) {
  std::unique_ptr<StructuredEvent> event =
      eventAbout(layout::kObjectCreation, name, edgePointRelated);
  event->remainder_of_body = object;
  return event;
}

std::unique_ptr<StructuredEvent> objectDeletion(const globaldefs::NVSList_T& name,
                                                bool edgePointRelated) {
  return eventAbout(layout::kObjectDeletion, name, edgePointRelated);
}

std::unique_ptr<StructuredEvent> attributeValueChange(const globaldefs::NVSList_T& name,
                                                      const notifications::NVList_T& attributes,
                                                      bool edgePointRelated,
                                                      const CORBA::Any* body) {
  std::unique_ptr<StructuredEvent> event =
      eventAbout(layout::kAttributeValueChange, name, edgePointRelated);
  addField(*event, layout::kAttributeList) <<= attributes;
  if (body != nullptr) {
    event->remainder_of_body = *body;
  }
  return event;
}

void stamp(StructuredEvent& event, std::uint64_t id, EventTime time) {
  setText(event.filterable_data[kIdField].value, std::to_string(id));
  setText(event.filterable_data[kTimeField].value, emsTimeOf(time));
}

std::size_t estimatedBytes(const StructuredEvent& event) {
  std::size_t attributes = 0;
  std::size_t encoded = orb::encodedBytes(event.remainder_of_body);
  for (CORBA::ULong i = 0; i < event.filterable_data.length(); ++i) {
    const CORBA::Any& value = event.filterable_data[i].value;
    const notifications::NVList_T* list = nullptr;
    attributes += (value >>= list) ? list->length() : 0;
    encoded += orb::encodedBytes(value);
  }
  return kBytesOfAnyEvent + kBytesOfAnAttribute * attributes + kBytesOfAnEncodedByte * encoded;
}

std::unique_ptr<StructuredEvent> gapReport(const Gap& gap, EventTime time) {
  std::unique_ptr<StructuredEvent> event = emptyEvent(layout::kEventsLost);
  setText(addField(*event, layout::kFirstLostId), std::to_string(gap.first));
  setText(addField(*event, layout::kLastLostId), std::to_string(gap.last));
  addField(*event, layout::kLostCount) <<= static_cast<CORBA::ULongLong>(gap.count);
  setText(addField(*event, layout::kEmsTime), emsTimeOf(time));
  return event;
}

}  // namespace agent
