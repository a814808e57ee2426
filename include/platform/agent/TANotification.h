// Sends notifications about managed objects to the agent's receivers.
//
// Thread-safety: any thread. The agent keeps the order of the calls of one thread.
// Ownership: all arguments are borrowed for the call. Texts are UTF-8.
// Errors: the functions may raise anything. The module calls them within HandleEvent, logs the
// exception, and drops the notifications for the remaining nodes of the event.

#ifndef PLATFORM_AGENT_TANOTIFICATION_H
#define PLATFORM_AGENT_TANOTIFICATION_H

#include "orb/idl/globaldefs.h"
#include "orb/idl/notifications.h"
#include "platform/framework/Export.h"

namespace NS_CORBA {

// edgePointRelated is the value of the filterable field "edgePointRelated" of the notification; the
// module always passes true. The names are those of CorbaUtilInterface; a name whose conversion
// failed may be empty.
class PLATFORM_API TANotification {
 public:
  // Sends an object creation. `object` contains the record of the object, a
  // TopoManagementManager::Node_T. May raise: anything.
  static void OnObjectCreated(const globaldefs::NVSList_T& objectName, const CORBA::Any& object,
                              bool edgePointRelated);

  // Sends an object deletion. May raise: anything.
  static void OnObjectDeleted(const globaldefs::NVSList_T& objectName, bool edgePointRelated);

  // Sends an attribute value change. `attributes` are the names and new values: one pair,
  // "nativeEMSName" and an Any with a string (CORBA::_tc_string). When hasAdditional is set,
  // `additional` is a value for the remainder of the notification's body, beside the attributes.
  // The module passes an empty Any and false. May raise: anything.
  static void OnObjectAVC(const globaldefs::NVSList_T& objectName,
                          const notifications::NVList_T& attributes, bool edgePointRelated,
                          const CORBA::Any& additional, bool hasAdditional);
};

}  // namespace NS_CORBA

#endif
