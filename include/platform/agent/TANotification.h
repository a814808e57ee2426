// The agent's notification sender.
//
// Arguments are lent for the call. A call may raise a CORBA system exception.
// Thread-safety: any thread; notifications leave in the order of the calls of one thread.

#ifndef PLATFORM_AGENT_TANOTIFICATION_H
#define PLATFORM_AGENT_TANOTIFICATION_H

#include "orb/idl/globaldefs.h"
#include "orb/idl/notifications.h"
#include "platform/framework/Export.h"

namespace NS_CORBA {

class PLATFORM_API TANotification {
 public:
  // edgePointRelated is the filterable field of that name, here and below.
  static void OnObjectCreated(const globaldefs::NVSList_T& objectName, const CORBA::Any& object,
                              bool edgePointRelated);
  static void OnObjectDeleted(const globaldefs::NVSList_T& objectName, bool edgePointRelated);
  static void OnObjectAVC(const globaldefs::NVSList_T& objectName,
                          const notifications::NVList_T& attributes, bool edgePointRelated,
                          const CORBA::Any& additional, bool hasAdditional);
};

}  // namespace NS_CORBA

#endif
