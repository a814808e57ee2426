// The event manager of the fakes.
//
// Steps of "TEEventMgr::Instance" run without a line in the journal.

#ifndef TESTS_FAKES_EVENTS_H
#define TESTS_FAKES_EVENTS_H

#include <vector>

#include "platform/event/EventMgr.h"

namespace fakes {

// The handlers that are subscribed to an event, in the order of their subscription.
std::vector<TEEventHandler*> subscribedTo(int eventId);

// Delivers an event to them on the calling thread.
void deliver(int eventId, const TEEvent& event);

// The platform has no event manager from here on.
void takeEventMgrAway();

void resetEvents();

}  // namespace fakes

#endif
