// platform/agent/TANotification.h: pushes structured events.
#include <ctime>
#include "Host.h"
#include "idl/NotificationLayout.h"
#include "orb/notification.h"
#include "platform/agent/TANotification.h"

using namespace notification_layout;
using CosNotification::StructuredEvent, globaldefs::NVSList_T, NS_CORBA::TANotification;

namespace {

CosNotifyComm::StructuredPushConsumer_var consumer;

CORBA::Any& addField(StructuredEvent& event, const char* name) {
  const CORBA::ULong last = event.filterable_data.length();
  event.filterable_data.length(last + 1);
  event.filterable_data[last].name = CORBA::string_dup(name);
  return event.filterable_data[last].value;
}

notifications::ObjectType_T typeOf(const NVSList_T& name) {
  const std::string kind = name.length() == 2 ? name[1].name.in() : "";
  if (kind == "ManagedElement" || kind == "ONE") return notifications::OT_MANAGED_ELEMENT;
  return kind == "TopoSubnetwork" ? notifications::OT_MULTILAYER_SUBNETWORK : notifications::OT_EMS;
}

// Either pointer may be null.
void send(const char* type, const NVSList_T& name, bool edgePointRelated,
          const notifications::NVList_T* attributes, const CORBA::Any* body) {
  if (CORBA::is_nil(consumer.in())) return;
  static unsigned long id = 0;
  const std::time_t time = std::time(nullptr);
  std::tm utc{};
  char now[32] = "";
  std::strftime(now, sizeof now, "%Y%m%d%H%M%S.0Z", gmtime_r(&time, &utc));
  StructuredEvent event;
  event.header.fixed_header.event_type.domain_name = CORBA::string_dup(kDomain);
  event.header.fixed_header.event_type.type_name = CORBA::string_dup(type);
  addField(event, kNotificationId) <<= std::to_string(++id).c_str();
  addField(event, kObjectName) <<= name;
  addField(event, kObjectType) <<= typeOf(name);
  addField(event, kEmsTime) <<= static_cast<const char*>(now);
  addField(event, kNeTime) <<= "";
  addField(event, kEdgePointRelated) <<= CORBA::Any::from_boolean(edgePointRelated);
  if (attributes != nullptr) addField(event, kAttributeList) <<= *attributes;
  if (body != nullptr) event.remainder_of_body = *body;
  consumer->push_structured_event(event);
}

}  // namespace

void host::setConsumer(CORBA::Object_ptr object) {
  consumer = CosNotifyComm::StructuredPushConsumer::_unchecked_narrow(object);
}

void TANotification::OnObjectCreated(const NVSList_T& name, const CORBA::Any& object, bool edge) {
  send(kObjectCreation, name, edge, nullptr, &object);
}

void TANotification::OnObjectDeleted(const NVSList_T& name, bool edge) {
  send(kObjectDeletion, name, edge, nullptr, nullptr);
}

void TANotification::OnObjectAVC(const NVSList_T& name, const notifications::NVList_T& attributes,
                                 bool edge, const CORBA::Any& additional, bool hasAdditional) {
  send(kAttributeValueChange, name, edge, &attributes, hasAdditional ? &additional : nullptr);
}
