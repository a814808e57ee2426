// The event manager of the fakes.

#ifndef FAKES_EVENTS_H
#define FAKES_EVENTS_H

#include <vector>

#include "platform/event/EventMgr.h"

namespace fakes {

// The handlers that are subscribed to an event, in the order of their subscription.
std::vector<TEEventHandler*> subscribedTo(int eventId);

// Delivers an event to them on the calling thread.
void deliver(int eventId, const TEEvent& event);

void resetEvents();

}  // namespace fakes

#endif
