// Structured events in the layout of idl/NotificationLayout.h.
//
// Stateless, any thread.

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

// UTC, yyyyMMddHHmmss.sZ.
std::string emsTimeOf(EventTime time);

// By the class of the last pair. OT_EMS, the managing system as a whole, for the system itself and
// also when the name does not tell: for a class that is no kind of object here, and for no name.
notifications::ObjectType_T objectTypeOf(const globaldefs::NVSList_T& name);

// Without id and time: stamp() sets them.
std::unique_ptr<CosNotification::StructuredEvent> objectCreation(const globaldefs::NVSList_T& name,
                                                                 const CORBA::Any& object,
                                                                 bool edgePointRelated);
std::unique_ptr<CosNotification::StructuredEvent> objectDeletion(const globaldefs::NVSList_T& name,
                                                                 bool edgePointRelated);
// The body is what remains of the event, or null.
std::unique_ptr<CosNotification::StructuredEvent> attributeValueChange(
    const globaldefs::NVSList_T& name, const notifications::NVList_T& attributes,
    bool edgePointRelated, const CORBA::Any* body);

void stamp(CosNotification::StructuredEvent& event, std::uint64_t id, EventTime time);

// An upper estimate of the memory that an event of this file takes. Throws a CORBA system
// exception.
std::size_t estimatedBytes(const CosNotification::StructuredEvent& event);

// The event NT_EVENTS_LOST.
std::unique_ptr<CosNotification::StructuredEvent> gapReport(const Gap& gap, EventTime time);

}  // namespace agent

#endif
