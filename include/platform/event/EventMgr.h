// The platform's event manager, and the topology events that it delivers. Texts are UTF-8.

#ifndef PLATFORM_EVENT_EVENTMGR_H
#define PLATFORM_EVENT_EVENTMGR_H

#include <vector>

#include "platform/domain/DomainRecords.h"
#include "platform/framework/Export.h"

// The topology events of the platform's event catalogue. The module sends one notification for each
// node of an event, in the order of the nodes, and reads these fields of a node:
//
//   event   fields                                              notification
//   372     nodeType, nodeId, parentId, parentType,             object creation with the node's
//           nativeName, attribute3, attribute4                  TMF record
//   373     nodeType, nodeId                                    object deletion
//   374     nodeType, nodeId, nativeName                        the new value of "nativeEMSName"
//
// The module converts the ids of the nodes to names (CorbaUtilInterface.h) while it handles the
// event, so conversions work for a deleted node too. A changed node without a native name has no
// notification. Elements without a topology node have no events.
constexpr int EVENT_TOPO_NODE_CREATED = 372;
constexpr int EVENT_TOPO_NODE_DELETED = 373;
constexpr int EVENT_TOPO_NODE_CHANGED = 374;  // the native name of each node may be new

// The payload of a topology event: the created, deleted or changed nodes. May be empty.
struct TEEvent {
  std::vector<NS_DOMAIN::TopoNode_T> nodes;
};

// Receives events. The module implements the handler.
//
// Thread-safety: the event manager calls HandleEvent on a thread of its own, one event at a time
// for each handler. Ownership: the subscriber owns the handler. Errors: HandleEvent raises nothing;
// the module logs exceptions of the host. The host defines the destructor (key function, see
// framework/ProcessException.h).
class PLATFORM_API TEEventHandler {
 public:
  // Called for each event that the handler has subscribed to. The event is borrowed for the call.
  // `source` belongs to the platform; the module ignores it. The result is always 0. Raises
  // nothing, but ends the process when the bundle manager raises an exception during a lookup.
  virtual int HandleEvent(int eventId, int source, const TEEvent& event) = 0;
  virtual ~TEEventHandler();
};

// Delivers events to the subscribed handlers.
//
// Thread-safety: any thread. Ownership: the host owns the event manager; the event manager borrows
// the handlers. Errors: the functions may raise anything; the module drops the exception without a
// log line and works without events. The host defines the destructor (key function).
class PLATFORM_API TEEventMgr {
 public:
  // The event manager, or null when the host has none. May raise: anything; init then succeeds
  // without events.
  static TEEventMgr* Instance();

  // Subscribes a handler to an event. The caller keeps the handler alive until UnSubscribe has
  // returned. Another call with the same handler and event has no effect: the handler still gets
  // each event once, and one UnSubscribe ends the subscription. `third` and `fourth` belong to the
  // platform; the module passes 21 and 0. May raise: anything; the subscriptions before the
  // exception stay.
  virtual void Subscribe(TEEventHandler* handler, int eventId, int third, int fourth) = 0;

  // Ends a subscription. Waits until a running HandleEvent call of the handler has returned, and
  // drops the handler's events that have not been delivered: after fini the handler's code is
  // unmapped. Ignores a subscription that does not exist; fini unsubscribes from all three events
  // in every case. May raise: anything; the later subscriptions then stay, and the host must not
  // call the handler after the unload.
  virtual void UnSubscribe(TEEventHandler* handler, int eventId) = 0;

 protected:
  virtual ~TEEventMgr();
};

#endif
