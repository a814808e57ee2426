#include "client/watch/Event.h"

#include <array>
#include <string_view>

#include "client/base/Decimal.h"
#include "idl/NotificationLayout.h"
#include "orb/idl/notifications.h"

namespace topoctl {
namespace {

using globaldefs::NVSList_T;
using topologicalLink::TopologicalLink_T;
using TopoManagementManager::Node_T;

constexpr std::array<const char*, 13> kObjectTypes = {
    "OT_EMS",
    "OT_MANAGED_ELEMENT",
    "OT_MULTILAYER_SUBNETWORK",
    "OT_TOPOLOGICAL_LINK",
    "OT_SUBNETWORK_CONNECTION",
    "OT_PHYSICAL_TERMINATION_POINT",
    "OT_CONNECTION_TERMINATION_POINT",
    "OT_TERMINATION_POINT_POOL",
    "OT_EQUIPMENT_HOLDER",
    "OT_EQUIPMENT",
    "OT_PROTECTION_GROUP",
    "OT_TRAFFIC_DESCRIPTOR",
    "OT_AID",
};
static_assert(kObjectTypes.size() == notifications::OT_AID + 1);

EventKind eventKind(const CosNotification::EventType& type) {
  if (std::string_view(type.domain_name.in()) != notification_layout::kDomain) {
    return EventKind::kOther;
  }
  const std::string_view name = type.type_name.in();
  if (name == notification_layout::kObjectCreation) {
    return EventKind::kCreation;
  }
  if (name == notification_layout::kObjectDeletion) {
    return EventKind::kDeletion;
  }
  if (name == notification_layout::kAttributeValueChange) {
    return EventKind::kChange;
  }
  return name == notification_layout::kEventsLost ? EventKind::kLost : EventKind::kOther;
}

// ---- values of any type

// Copies the value and returns true if the Any contains the type.
template <typename Type>
bool extract(const CORBA::Any& any, std::optional<Type>& value) {
  const Type* held = nullptr;
  if (!(any >>= held) || held == nullptr) {
    return false;
  }
  value = *held;
  return true;
}

template <>
bool extract(const CORBA::Any& any, std::optional<std::string>& value) {
  const char* held = nullptr;
  if (!(any >>= held) || held == nullptr) {
    return false;
  }
  value = held;
  return true;
}

template <>
bool extract(const CORBA::Any& any, std::optional<bool>& value) {
  CORBA::Boolean held = false;
  if (!(any >>= CORBA::Any::to_boolean(held))) {
    return false;
  }
  value = held;
  return true;
}

// As extract(), for a number that was sent with the type Sent.
template <typename Sent, typename Kept>
bool extractNumber(const CORBA::Any& any, std::optional<Kept>& value) {
  Sent held = 0;
  if (!(any >>= held)) {
    return false;
  }
  value = Kept{held};
  return true;
}

template <>
bool extract(const CORBA::Any& any, std::optional<std::uint64_t>& value) {
  return extractNumber<CORBA::ULongLong>(any, value) || extractNumber<CORBA::ULong>(any, value) ||
         extractNumber<CORBA::UShort>(any, value);
}

template <>
bool extract(const CORBA::Any& any, std::optional<std::int64_t>& value) {
  return extractNumber<CORBA::LongLong>(any, value) || extractNumber<CORBA::Long>(any, value) ||
         extractNumber<CORBA::Short>(any, value);
}

template <typename Type>
bool extractOwn(const CORBA::Any& any, OwnedValue& own) {
  std::optional<Type> value;
  if (!extract(any, value)) {
    return false;
  }
  own = *value;
  return true;
}

OwnedValue ownedValue(const CORBA::Any& any) {
  OwnedValue own;
  extractOwn<std::string>(any, own) || extractOwn<bool>(any, own) ||
      extractOwn<std::int64_t>(any, own) || extractOwn<std::uint64_t>(any, own) ||
      extractOwn<NVSList_T>(any, own);
  return own;
}

// ---- parts of an event

void decodeObjectType(const CORBA::Any& any, Event& event) {
  notifications::ObjectType_T type{};
  // An ORB may deliver values outside the enumeration.
  if ((any >>= type) && static_cast<std::size_t>(type) < kObjectTypes.size()) {
    event.objectType = kObjectTypes[static_cast<std::size_t>(type)];
  }
}

void decodeAttributes(const CORBA::Any& any, Event& event) {
  const notifications::NVList_T* list = nullptr;
  if (!(any >>= list) || list == nullptr) {
    return;
  }
  for (CORBA::ULong i = 0; i < list->length(); ++i) {
    event.attributes.push_back({(*list)[i].name.in(), ownedValue((*list)[i].value)});
  }
}

void decodeObject(const CORBA::Any& any, Event& event) {
  std::optional<Node_T> node;
  std::optional<TopologicalLink_T> link;
  if (extract(any, node)) {
    event.object = *node;
  } else if (extract(any, link)) {
    event.object = *link;
  }
}

template <auto member>
void decodeMember(const CORBA::Any& any, Event& event) {
  extract(any, event.*member);
}

struct Part {
  const char* name;
  void (*decode)(const CORBA::Any&, Event&);
};

constexpr std::array<Part, 10> kParts = {{
    {notification_layout::kNotificationId, decodeMember<&Event::notificationId>},
    {notification_layout::kObjectName, decodeMember<&Event::objectName>},
    {notification_layout::kObjectType, decodeObjectType},
    {notification_layout::kEmsTime, decodeMember<&Event::emsTime>},
    {notification_layout::kNeTime, decodeMember<&Event::neTime>},
    {notification_layout::kEdgePointRelated, decodeMember<&Event::edgePointRelated>},
    {notification_layout::kAttributeList, decodeAttributes},
    {notification_layout::kFirstLostId, decodeMember<&Event::firstLostId>},
    {notification_layout::kLastLostId, decodeMember<&Event::lastLostId>},
    {notification_layout::kLostCount, decodeMember<&Event::lostCount>},
}};

// Some ORBs decode an Any here, and raise an exception for a malformed value.
void decodePart(const Part& part, const CORBA::Any& any, Event& event) {
  try {
    part.decode(any, event);
  } catch (const CORBA::SystemException&) {
    // Treated like a missing part.
  }
}

}  // namespace

Value borrowedValue(const OwnedValue& own) {
  return std::visit(
      Overloaded{[](const std::string& text) -> Value { return std::string_view(text); },
                 [](const NVSList_T& pairs) -> Value { return InfoPairs{&pairs}; },
                 [](auto plain) -> Value { return plain; }},
      own);
}

Event decode(const CosNotification::StructuredEvent& received) {
  Event event;
  const CosNotification::EventType& type = received.header.fixed_header.event_type;
  event.kind = eventKind(type);
  event.type = type.type_name.in();
  for (CORBA::ULong i = 0; i < received.filterable_data.length(); ++i) {
    const CosNotification::Property& property = received.filterable_data[i];
    for (const Part& part : kParts) {
      if (std::string_view(property.name.in()) == part.name) {
        decodePart(part, property.value, event);
      }
    }
  }
  decodePart({"", decodeObject}, received.remainder_of_body, event);
  return event;
}

std::optional<std::uint64_t> parseId(const std::optional<std::string>& id) {
  return id ? parseDecimal<std::uint64_t>(*id) : std::nullopt;
}

}  // namespace topoctl
