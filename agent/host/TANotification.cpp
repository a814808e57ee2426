// Defines platform/agent/TANotification.h: the notification sender.

#include "platform/agent/TANotification.h"

#include "agent/host/RunningAgent.h"
#include "agent/notifications/Notifier.h"

namespace NS_CORBA {

void TANotification::OnObjectCreated(const globaldefs::NVSList_T& objectName,
                                     const CORBA::Any& object, bool edgePointRelated) {
  if (agent::Notifier* const notifier = agent::runningAgent().notifier) {
    notifier->objectCreated(objectName, object, edgePointRelated);
  }
}

void TANotification::OnObjectDeleted(const globaldefs::NVSList_T& objectName,
                                     bool edgePointRelated) {
  if (agent::Notifier* const notifier = agent::runningAgent().notifier) {
    notifier->objectDeleted(objectName, edgePointRelated);
  }
}

// The additional value becomes the body of the event.
void TANotification::OnObjectAVC(const globaldefs::NVSList_T& objectName,
                                 const notifications::NVList_T& attributes, bool edgePointRelated,
                                 const CORBA::Any& additional, bool hasAdditional) {
  if (agent::Notifier* const notifier = agent::runningAgent().notifier) {
    notifier->attributesChanged(objectName, attributes, edgePointRelated,
                                hasAdditional ? &additional : nullptr);
  }
}

}  // namespace NS_CORBA
