// The handler of the platform's topology events.

#ifndef TOPOEVENT_CORBATOPOEVENTHANDLER_H
#define TOPOEVENT_CORBATOPOEVENTHANDLER_H

#include "platform/event/EventMgr.h"

namespace NS_CORBA {

// Sends a notification for each node of an event.
//
// Thread-safety: any thread; the handler has no state. Ownership: the service object owns the
// handler; events are borrowed for the call. Errors: HandleEvent logs every exception.
class CorbaTopoEventHandler final : public TEEventHandler {
 public:
  // Always returns 0. A failure ends the handling of the event; notifications of earlier nodes have
  // been sent.
  int HandleEvent(int eventId, int source, const TEEvent& event) override;
};

}  // namespace NS_CORBA

#endif
