// The fake event manager. Calls of "TEEventMgr::Instance" run planned steps but write no line in
// the journal.

#ifndef TESTS_FAKES_EVENTS_H
#define TESTS_FAKES_EVENTS_H

#include <vector>

#include "platform/event/EventMgr.h"

namespace fakes {

// The handlers of an event, in the order of their subscription.
std::vector<TEEventHandler*> subscribedTo(int eventId);

// Calls the handlers of an event on the calling thread.
void deliver(int eventId, const TEEvent& event);

// TEEventMgr::Instance returns null until resetEvents.
void takeEventMgrAway();

void resetEvents();

}  // namespace fakes

#endif
