// Receives the notifications of a host.

#ifndef CONFORMANCE_RECEIVER_H
#define CONFORMANCE_RECEIVER_H

#include <chrono>
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "orb/idl/notifications.h"
#include "orb/notification.h"
#include "orb/orb.h"

namespace conformance {

// The fields of a notification that the checks read.
struct Notification {
  std::string type;         // such as NT_OBJECT_CREATION
  std::string object;       // the name, as "EMS=x TopoSubnetwork=y"
  std::string name;         // the native name: of the created node, or the changed attribute
  bool hasNode = false;     // the body has a Node_T
  std::string attribute;    // the name of the only changed attribute, or ""
  long long id = -1;        // the notification id, -1 for a malformed one
  std::string layoutFault;  // the first difference from NotificationLayout.h, or ""
};

// A consumer that stores notifications.
//
// Thread-safety: any thread; the destructor deactivates the consumer. Borrows the ORB.
// Errors: the constructor throws CORBA::SystemException.
class Receiver {
 public:
  explicit Receiver(orb::Server& server);
  ~Receiver();
  Receiver(const Receiver&) = delete;
  Receiver& operator=(const Receiver&) = delete;

  CosNotifyComm::StructuredPushConsumer_ptr reference() const { return reference_.in(); }

  // Takes all notifications up to the first one about the object, which is the last element. Empty
  // when none about the object arrives before the timeout.
  std::vector<Notification> takeUntil(const std::string& object, std::chrono::milliseconds timeout);

  void push(const Notification& notification);
  void clear();

 private:
  orb::Server& server_;
  std::mutex mutex_;
  std::condition_variable arrived_;
  std::deque<Notification> received_;  // guarded by mutex_
  PortableServer::ServantBase_var servant_;
  PortableServer::ObjectId_var id_;
  CosNotifyComm::StructuredPushConsumer_var reference_;
};

}  // namespace conformance

#endif
