// The platform's event manager, and the topology events that it delivers.

#ifndef PLATFORM_EVENT_EVENTMGR_H
#define PLATFORM_EVENT_EVENTMGR_H

#include <vector>

#include "platform/domain/DomainRecords.h"
#include "platform/framework/Export.h"

// The topology events of the platform's event catalogue.
constexpr int EVENT_TOPO_NODE_CREATED = 372;
constexpr int EVENT_TOPO_NODE_DELETED = 373;
constexpr int EVENT_TOPO_NODE_CHANGED = 374;  // the native name of each node is new

// The payload of a topology event: the created, deleted or changed nodes.
struct TEEvent {
  std::vector<NS_DOMAIN::TopoNode_T> nodes;
};

// Receives events.
//
// Thread-safety: the event manager calls HandleEvent on a thread of its own, one event at a time
// for each handler. Ownership: the subscriber owns the handler. Errors: HandleEvent must not throw.
// The host defines the destructor (key function, see framework/ProcessException.h).
class PLATFORM_API TEEventHandler {
 public:
  // Called for each event that the handler has subscribed to. The event is borrowed for the call.
  // `source` belongs to the platform; the module ignores it. The event manager ignores the result.
  virtual int HandleEvent(int eventId, int source, const TEEvent& event) = 0;
  virtual ~TEEventHandler();
};

// Delivers events to the subscribed handlers.
//
// Thread-safety: any thread. Ownership: the host owns the event manager; the event manager borrows
// the handlers. Errors: the functions may throw any exception; the module then works without
// events.
class PLATFORM_API TEEventMgr {
 public:
  // The event manager, or null when the host has none.
  static TEEventMgr* Instance();

  // Subscribes a handler to an event. The caller keeps the handler alive until UnSubscribe has
  // returned. `third` and `fourth` belong to the platform; the module passes 21 and 0.
  virtual void Subscribe(TEEventHandler* handler, int eventId, int third, int fourth) = 0;

  // Ends a subscription: when UnSubscribe has returned, HandleEvent is not called again for this
  // event. A subscription that does not exist is ignored.
  virtual void UnSubscribe(TEEventHandler* handler, int eventId) = 0;

 protected:
  virtual ~TEEventMgr();
};

#endif
