// What the files of the host share.
#pragma once
#include <string>
#include "host_defaults/Module.h"
#include "orb/idl/globaldefs.h"
#include "platform/domain/DomainRecords.h"

namespace host {

constexpr const char* kEmsName = "Sample";
constexpr CORBA::ULong kFailure = 1000;  // plus a globaldefs::ExceptionType_T: a failure code

extern host_defaults::Module module;  // the module, and the POAs of its objects

// Publish the interfaces that the module looks up by name.
void publishDomain();
void publishNaming();
void publishSecurity();

// Change the network and raise the event.
void createNode(const std::string& id);
void changeNode(const std::string& id);
void deleteNode(const std::string& id);
bool hasSubnetwork(const std::string& id);

void raiseEvent(int eventId, const NS_DOMAIN::TopoNode_T& node);
void drainEvents();                            // waits until the handlers have handled all events
void setConsumer(CORBA::Object_ptr consumer);  // of the notifications; set before the load

}  // namespace host
