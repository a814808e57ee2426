// The platform's event manager.
//
// Thread-safety: Subscribe and UnSubscribe from any thread. HandleEvent is called on the event
// manager's delivery thread, one event at a time for each handler; after UnSubscribe has returned
// the handler is not called again for that event.
//
// The host defines the destructors (key functions, see framework/ProcessException.h).

#ifndef PLATFORM_EVENT_EVENTMGR_H
#define PLATFORM_EVENT_EVENTMGR_H

#include <vector>

#include "platform/domain/DomainRecords.h"
#include "platform/framework/Export.h"

// What an event carries: the topology nodes that it is about.
struct TEEvent {
  std::vector<NS_DOMAIN::TopoNode_T> nodes;
};

class PLATFORM_API TEEventHandler {
 public:
  // Called for each subscribed event. The event is lent for the time of the call. The second
  // argument is the platform's own. The result is not examined; exceptions must not leave.
  virtual int HandleEvent(int eventId, int source, const TEEvent& event) = 0;
  virtual ~TEEventHandler();
};

class PLATFORM_API TEEventMgr {
 public:
  static TEEventMgr* Instance();

  // Registers a handler for one event identifier. The handler stays owned by the caller, who keeps
  // it alive until it has unsubscribed. third and fourth are the platform's own (21 and 0 here).
  virtual void Subscribe(TEEventHandler* handler, int eventId, int third, int fourth) = 0;

  // Removes a registration; a registration that does not exist is no error.
  virtual void UnSubscribe(TEEventHandler* handler, int eventId) = 0;

 protected:
  virtual ~TEEventMgr();
};

#endif
