#include "tests/unit/client/support/MakeEvents.h"

#include "idl/NotificationLayout.h"
#include "orb/idl/notifications.h"

namespace topoctl {
namespace {

constexpr const char* kTime = "20261121100307.4Z";

CosNotification::StructuredEvent eventAbout(const char* type, const std::string& id,
                                            const globaldefs::NVSList_T& name) {
  CosNotification::StructuredEvent event = eventOf(type);
  if (!id.empty()) {
    addData(event, "notificationId") <<= id.c_str();
  }
  addData(event, "objectName") <<= name;
  addData(event, "objectType") <<= notifications::OT_MULTILAYER_SUBNETWORK;
  addData(event, "emsTime") <<= kTime;
  addData(event, "neTime") <<= "";
  addData(event, "edgePointRelated") <<= CORBA::Any::from_boolean(false);
  return event;
}

}  // namespace

CosNotification::StructuredEvent eventOf(const std::string& type) {
  CosNotification::StructuredEvent event;
  event.header.fixed_header.event_type.domain_name = notification_layout::kDomain;
  event.header.fixed_header.event_type.type_name = type.c_str();
  return event;
}

CORBA::Any& addData(CosNotification::StructuredEvent& event, const std::string& name) {
  const CORBA::ULong last = event.filterable_data.length();
  event.filterable_data.length(last + 1);
  event.filterable_data[last].name = name.c_str();
  return event.filterable_data[last].value;
}

CosNotification::StructuredEvent creation(const std::string& id,
                                          const TopoManagementManager::Node_T& node) {
  auto event = eventAbout("NT_OBJECT_CREATION", id, node.name);
  event.remainder_of_body <<= node;
  return event;
}

CosNotification::StructuredEvent deletion(const std::string& id, const std::string& node) {
  return eventAbout("NT_OBJECT_DELETION", id, makeNode(node).name);
}

CosNotification::StructuredEvent renaming(const std::string& id, const std::string& node,
                                          const std::string& name) {
  auto event = eventAbout("NT_ATTRIBUTE_VALUE_CHANGE", id, makeNode(node).name);
  notifications::NVList_T changes;
  changes.length(1);
  changes[0].name = "nativeEMSName";
  changes[0].value <<= name.c_str();
  addData(event, "attributeList") <<= changes;
  return event;
}

CosNotification::StructuredEvent lost(const std::string& first, const std::string& last,
                                      CORBA::ULongLong count) {
  auto event = eventOf("NT_EVENTS_LOST");
  addData(event, "firstLostId") <<= first.c_str();
  addData(event, "lastLostId") <<= last.c_str();
  addData(event, "lostCount") <<= count;
  addData(event, "emsTime") <<= kTime;
  return event;
}

}  // namespace topoctl
