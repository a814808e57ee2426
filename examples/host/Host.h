// The parts of the host that several of its files use.

#ifndef HOST_H
#define HOST_H

#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "orb/idl/common.h"
#include "orb/notification.h"
#include "platform/domain/DomainRecords.h"

namespace host {

constexpr const char* kEmsName = "Sample";

// Failure codes of this host. Failures.cpp says what a client receives.
constexpr CORBA::ULong kNotSupported = 1;
constexpr CORBA::ULong kInvalidName = 2;
constexpr CORBA::ULong kNoSuchObject = 3;
constexpr CORBA::ULong kTooManyIterators = 4;

// A running ORB that serves requests. The destructor waits for running requests.
class Orb {
 public:
  Orb(int argc, char** argv);  // the arguments may contain options of the ORB
  ~Orb();
  CORBA::ORB_ptr get() { return orb_.in(); }
  PortableServer::POA_ptr rootPoa() { return root_.in(); }

 private:
  CORBA::ORB_var orb_;
  PortableServer::POA_var root_;
  std::thread thread_;
};

// The start of the ORB with UTF-8 as the code set of all texts: one file for each ORB.
CORBA::ORB_ptr startOrb(int argc, char** argv);

// A POA for objects of the module. Open while a module is loaded. Any thread may call get.
class ModulePoa {
 public:
  // fixedIds: the caller chooses the object ids, and references stay valid after a reload.
  void open(PortableServer::POA_ptr root, const char* name, bool fixedIds);
  void close();  // rejects new requests, waits for running requests, drops the servants
  PortableServer::POA_ptr get();  // a new reference; nil while closed

 private:
  std::mutex mutex_;
  PortableServer::POA_var poa_;
};

extern ModulePoa managerPoa;
extern ModulePoa iteratorPoa;

// Registration.cpp
std::string managerReference(CORBA::ORB_ptr orb);  // throws std::runtime_error without a manager
void forgetManagers();

// Iterators.cpp
void forgetIterators();

// Events.cpp
void raiseEvent(int eventId, const NS_DOMAIN::TopoNode_T& node);
void drainEvents();          // waits until the handlers have handled all raised events
void forgetEventHandlers();  // waits for a running handler

// Domain.cpp. The operations throw std::runtime_error.
void createNode(const std::string& id);
void changeNode(const std::string& id, const std::string& name);
void deleteNode(const std::string& id);
bool hasSubnetwork(const std::string& id);

// Notifications.cpp. A nil consumer: notifications are only logged.
void setConsumer(CosNotifyComm::StructuredPushConsumer_ptr consumer);

// Publishes the interfaces that the module looks up by name.
void publishDomain();
void publishNaming();
void publishSecurity();

}  // namespace host

#endif
