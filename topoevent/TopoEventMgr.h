// Subscribes the module to the platform's topology events, and turns events into notifications.
//
// Thread-safety: any thread. Ownership: the module owns the instance; handlers and nodes are
// borrowed. Errors: the notify functions pass exceptions on; the other functions drop the
// exceptions of the platform.

#ifndef TOPOEVENT_TOPOEVENTMGR_H
#define TOPOEVENT_TOPOEVENTMGR_H

#include <vector>

#include "platform/event/EventMgr.h"

// The operations are static, so they work even when Instance returns null.
class TopoEventMgr {
 public:
  // The instance, made on first use. Returns null when ACE's lock of static objects cannot be
  // locked and there is no instance yet.
  static TopoEventMgr* Instance();

  // Deletes the instance; the next Instance call makes a new instance. Does nothing when ACE's lock
  // cannot be locked.
  static void CleanUp();

  // Subscribes a handler to the three events, when SecurityIF allows events. The caller keeps the
  // handler alive until OnUnSubscibeEvent returns. Always returns 0: exceptions of the platform are
  // dropped, and the module then works without events. Logs a null handler.
  static int OnSubscibeEvent(TEEventHandler* pHandler);

  // Unsubscribes a handler from the three events, also when it was never subscribed. Result and
  // errors as for OnSubscibeEvent.
  static int OnUnSubscibeEvent(TEEventHandler* pHandler);

  // --- Each function sends a notification for each node, in order, and returns 0. The first
  // --- exception passes to the caller; the remaining nodes are not handled.

  // Sends object creations. The nodes share a record, so a field that the conversion of a node
  // leaves unchanged has the value of the node before.
  static int notifyNodesCreated(const std::vector<NS_DOMAIN::TopoNode_T>& nodes);

  // Sends object deletions. A failed name conversion is ignored; the name may be partial.
  static int notifyNodesDeleted(const std::vector<NS_DOMAIN::TopoNode_T>& nodes);

  // Sends attribute value changes of "nativeEMSName". Skips nodes without a label. In test mode, a
  // node whose label is in nodeLabelCache ends the event, and the label of the last notification is
  // not sent again.
  static int notifyNodeLabelsChanged(const std::vector<NS_DOMAIN::TopoNode_T>& nodes);
};

#endif
