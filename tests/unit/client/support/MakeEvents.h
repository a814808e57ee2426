// Notifications in the layout of an agent.

#ifndef TESTS_UNIT_CLIENT_SUPPORT_MAKEEVENTS_H
#define TESTS_UNIT_CLIENT_SUPPORT_MAKEEVENTS_H

#include <string>

#include "orb/notification.h"
#include "tests/unit/client/support/FakeAgent.h"

namespace topoctl {

// An empty id gives a notification without an id. The objects are results of makeNode().
CosNotification::StructuredEvent creation(const std::string& id,
                                          const TopoManagementManager::Node_T& node);
CosNotification::StructuredEvent deletion(const std::string& id, const std::string& node);
CosNotification::StructuredEvent renaming(const std::string& id, const std::string& node,
                                          const std::string& name);
CosNotification::StructuredEvent lost(const std::string& first, const std::string& last,
                                      CORBA::ULongLong count);

CosNotification::StructuredEvent eventOf(const std::string& type);
CORBA::Any& addData(CosNotification::StructuredEvent& event, const std::string& name);

}  // namespace topoctl

#endif
