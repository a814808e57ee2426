// Structured events in the layout of idl/NotificationLayout.h.
//
// Thread-safety: any thread. Errors: functions that make or fill an event throw std::bad_alloc.

#ifndef AGENT_NOTIFICATIONS_STRUCTUREDEVENTS_H
#define AGENT_NOTIFICATIONS_STRUCTUREDEVENTS_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "agent/notifications/Gap.h"
#include "orb/idl/globaldefs.h"
#include "orb/idl/notifications.h"
#include "orb/notification.h"

namespace agent {

using EventTime = std::chrono::system_clock::time_point;

// The time in UTC as yyyyMMddHHmmss.sZ, cut to tenths of a second.
std::string emsTimeOf(EventTime time);

// The object type of the class in the last pair of the name. OT_EMS for the managing system, for an
// unknown class and for an empty name.
notifications::ObjectType_T objectTypeOf(const globaldefs::NVSList_T& name);

// These functions make events without id and time, which stamp() sets.
std::unique_ptr<CosNotification::StructuredEvent> objectCreation(const globaldefs::NVSList_T& name,
                                                                 const CORBA::Any& object,
                                                                 bool edgePointRelated);
std::unique_ptr<CosNotification::StructuredEvent> objectDeletion(const globaldefs::NVSList_T& name,
                                                                 bool edgePointRelated);
// body: the remainder of the event's body, or null.
std::unique_ptr<CosNotification::StructuredEvent> attributeValueChange(
    const globaldefs::NVSList_T& name, const notifications::NVList_T& attributes,
    bool edgePointRelated, const CORBA::Any* body);

// Sets the id and the time of an event. REQUIRES: made by one of the functions above.
void stamp(CosNotification::StructuredEvent& event, std::uint64_t id, EventTime time);

// An upper estimate of the memory that an event of this file takes. Throws a CORBA system
// exception.
std::size_t estimatedBytes(const CosNotification::StructuredEvent& event);

// Makes the event NT_EVENTS_LOST with its time. The event has no id.
std::unique_ptr<CosNotification::StructuredEvent> gapReport(const Gap& gap, EventTime time);

}  // namespace agent

#endif
