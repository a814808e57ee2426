// platform/agent/TANotification.h: makes a structured event of each notification.

#include <ctime>

#include "Host.h"
#include "idl/NotificationLayout.h"
#include "platform/agent/Logging.h"
#include "platform/agent/TANotification.h"

namespace {

namespace layout = notification_layout;

CosNotifyComm::StructuredPushConsumer_var consumer;
unsigned long lastId = 0;  // only the thread of the event manager sends notifications

CORBA::Any& addField(CosNotification::StructuredEvent& event, const char* name) {
  const CORBA::ULong last = event.filterable_data.length();
  event.filterable_data.length(last + 1);
  event.filterable_data[last].name = CORBA::string_dup(name);
  return event.filterable_data[last].value;
}

notifications::ObjectType_T typeOf(const globaldefs::NVSList_T& name) {
  const bool isSubnetwork =
      name.length() == 2 && name[1].name.in() == std::string("TopoSubnetwork");
  return isSubnetwork ? notifications::OT_MULTILAYER_SUBNETWORK : notifications::OT_MANAGED_ELEMENT;
}

std::string now() {
  const std::time_t seconds = std::time(nullptr);
  std::tm utc{};
  char text[32];
  std::strftime(text, sizeof text, "%Y%m%d%H%M%S.0Z", gmtime_r(&seconds, &utc));
  return text;
}

CosNotification::StructuredEvent eventOf(const char* type, const globaldefs::NVSList_T& name,
                                         bool edgePointRelated) {
  CosNotification::StructuredEvent event;
  event.header.fixed_header.event_type.domain_name = CORBA::string_dup(layout::kDomain);
  event.header.fixed_header.event_type.type_name = CORBA::string_dup(type);
  addField(event, layout::kNotificationId) <<= std::to_string(++lastId).c_str();
  addField(event, layout::kObjectName) <<= name;
  addField(event, layout::kObjectType) <<= typeOf(name);
  addField(event, layout::kEmsTime) <<= now().c_str();
  addField(event, layout::kNeTime) <<= "";
  addField(event, layout::kEdgePointRelated) <<= CORBA::Any::from_boolean(edgePointRelated);
  return event;
}

void push(const CosNotification::StructuredEvent& event) {
  if (!CORBA::is_nil(consumer.in())) {
    consumer->push_structured_event(event);
  }
}

}  // namespace

void host::setConsumer(CosNotifyComm::StructuredPushConsumer_ptr receiver) {
  consumer = CosNotifyComm::StructuredPushConsumer::_duplicate(receiver);
}

namespace NS_CORBA {

void TANotification::OnObjectCreated(const globaldefs::NVSList_T& objectName,
                                     const CORBA::Any& object, bool edgePointRelated) {
  auto event = eventOf(layout::kObjectCreation, objectName, edgePointRelated);
  event.remainder_of_body = object;
  push(event);
}

void TANotification::OnObjectDeleted(const globaldefs::NVSList_T& objectName,
                                     bool edgePointRelated) {
  push(eventOf(layout::kObjectDeletion, objectName, edgePointRelated));
}

void TANotification::OnObjectAVC(const globaldefs::NVSList_T& objectName,
                                 const notifications::NVList_T& attributes, bool edgePointRelated,
                                 const CORBA::Any& additional, bool hasAdditional) {
  auto event = eventOf(layout::kAttributeValueChange, objectName, edgePointRelated);
  addField(event, layout::kAttributeList) <<= attributes;
  if (hasAdditional) {
    event.remainder_of_body = additional;
  }
  push(event);
}

}  // namespace NS_CORBA
