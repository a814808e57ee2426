// The module's part in the platform's topology events: who gets them, and which notifications they
// become.
//
// Thread-safety: every operation from any thread.

#ifndef TOPOEVENT_TOPOEVENTMGR_H
#define TOPOEVENT_TOPOEVENTMGR_H

#include <vector>

#include "platform/event/EventMgr.h"

// Has no data, so that its operations need no instance: they do their work also when Instance could
// give none.
class TopoEventMgr {
 public:
  // The one instance, made on first use. Null when there is none yet and ACE's lock of static
  // objects cannot be taken.
  static TopoEventMgr* Instance();

  // Destroys the instance; the next use makes a new one. When the lock cannot be taken, the
  // instance stays.
  static void CleanUp();

  // Subscribe a handler to the three events, if the platform lets this process have events at all,
  // and unsubscribe it from them, subscribed or not. The caller keeps the handler alive in between.
  // Whatever the platform raises is dropped: without a subscription there are no events, that is
  // all. Always 0.
  static int OnSubscibeEvent(TEEventHandler* pHandler);
  static int OnUnSubscibeEvent(TEEventHandler* pHandler);

  // --- One notification for each node of an event, in order. Whatever raises an exception ends the
  // --- event there: what was sent stays sent, and the exception passes. Always 0.

  // The node with its name. All nodes of an event share one record, so that a field of which a node
  // says nothing is that of the node before it.
  static int notifyNodesCreated(const std::vector<NS_DOMAIN::TopoNode_T>& nodes);

  // A node without a valid name is reported with as much of it as there is.
  static int notifyNodesDeleted(const std::vector<NS_DOMAIN::TopoNode_T>& nodes);

  // The changed label; nodes without a label are skipped. In test mode, a node whose label is known
  // already ends the event, and a label that was the last one reported is not reported again.
  static int notifyNodeLabelsChanged(const std::vector<NS_DOMAIN::TopoNode_T>& nodes);
};

#endif
