// Sends notifications about managed objects to the agent's receivers.
//
// Thread-safety: any thread. The agent keeps the order of the calls of one thread.
// Ownership: all arguments are borrowed for the call.
// Errors: a call may throw a CORBA system exception.

#ifndef PLATFORM_AGENT_TANOTIFICATION_H
#define PLATFORM_AGENT_TANOTIFICATION_H

#include "orb/idl/globaldefs.h"
#include "orb/idl/notifications.h"
#include "platform/framework/Export.h"

namespace NS_CORBA {

// edgePointRelated is the value of the filterable field "edgePointRelated" of the notification.
class PLATFORM_API TANotification {
 public:
  // Sends an object creation. `object` contains the record of the object.
  static void OnObjectCreated(const globaldefs::NVSList_T& objectName, const CORBA::Any& object,
                              bool edgePointRelated);

  // Sends an object deletion.
  static void OnObjectDeleted(const globaldefs::NVSList_T& objectName, bool edgePointRelated);

  // Sends an attribute value change. `attributes` are the names and new values. `additional` counts
  // only when hasAdditional is set.
  static void OnObjectAVC(const globaldefs::NVSList_T& objectName,
                          const notifications::NVList_T& attributes, bool edgePointRelated,
                          const CORBA::Any& additional, bool hasAdditional);
};

}  // namespace NS_CORBA

#endif
