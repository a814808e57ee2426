// What the files of the host share.
#pragma once
#include <string>
#include "orb/corba.h"
#include "orb/idl/globaldefs.h"
#include "platform/domain/DomainRecords.h"

namespace host {

constexpr const char* kEmsName = "Sample";
constexpr CORBA::ULong kFailure = 1000;  // plus a globaldefs::ExceptionType_T: a failure code

CORBA::ORB_ptr startOrb(int argc, char** argv);  // texts are UTF-8; one file for each ORB

// The POAs of the module's objects. Set while no request runs; nil while no module is loaded.
extern PortableServer::POA_var managerPoa, iteratorPoa;
std::string managerReference(CORBA::ORB_ptr orb);

// One thread that serves no request loads and unloads. After a failure nothing is loaded.
void load(const std::string& file, PortableServer::POA_ptr root);
void unload();
void forgetManagers();       // drops the registration of a failed module
void forgetEventHandlers();  // drops the subscriptions, and waits for a running handler

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
void setConsumer(CORBA::Object_ptr consumer);  // of the notifications; set before load()

}  // namespace host
