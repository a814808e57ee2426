// The receiver of the platform's topology events.

#ifndef TOPOEVENT_CORBATOPOEVENTHANDLER_H
#define TOPOEVENT_CORBATOPOEVENTHANDLER_H

#include "platform/event/EventMgr.h"

namespace NS_CORBA {

// Turns events into notifications of the agent. Thread-safety: has no state; events may come from
// several threads at once.
class CorbaTopoEventHandler final : public TEEventHandler {
 public:
  // Always 0. No exception leaves it: a failure is logged and ends the event.
  int HandleEvent(int eventId, int source, const TEEvent& event) override;
};

}  // namespace NS_CORBA

#endif
