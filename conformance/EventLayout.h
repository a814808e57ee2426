// Compares notifications with idl/NotificationLayout.h.

#ifndef CONFORMANCE_EVENTLAYOUT_H
#define CONFORMANCE_EVENTLAYOUT_H

#include <string>

#include "orb/notification.h"

namespace conformance {

// The first difference of a structured event from the layout; "" without a difference. Pure
// function; thread-safety: any thread.
std::string layoutFaultOf(const CosNotification::StructuredEvent& event);

// The value of a field of the filterable data; null when the event does not have the field.
// Thread-safety: any thread. The value belongs to the event.
const CORBA::Any* fieldOf(const CosNotification::StructuredEvent& event, const char* name);

// The notification id as a number; -1 for a field that is missing or no decimal number below 2^63.
// Thread-safety: any thread.
long long idOf(const CosNotification::StructuredEvent& event);

}  // namespace conformance

#endif
