// Notifications of a notifier in this process to consumers in another process.

#ifndef BENCH_DELIVERY_H
#define BENCH_DELIVERY_H

#include <cstdint>
#include <string>

#include "agent/notifications/Notifier.h"
#include "orb/orb.h"
#include "tests/support/Process.h"

namespace bench {

// The arguments of a notification of a new native name.
globaldefs::NVSList_T changedObject();
notifications::NVList_T newName();

// Throws CORBA exceptions.
CosNotifyComm::StructuredPushConsumer_var consumerAt(CORBA::ORB_ptr orb,
                                                     const std::string& reference);

// A notifier and the process of its consumers.
//
// Thread-safety: one thread. Borrows the server, whose POA manager is active. Errors: the
// constructor throws std::runtime_error and CORBA exceptions.
class Delivery {
 public:
  Delivery(orb::Server& server, int subscribers);

  // Makes this number of notifications and waits for their delivery. Returns whether all queues are
  // empty.
  bool deliver(int count);

  // Whether this number of subscribers has received all notifications.
  bool reached(int subscribers);

 private:
  void subscribe(CORBA::ORB_ptr orb, const std::string& reference);

  const globaldefs::NVSList_T name_ = changedObject();
  const notifications::NVList_T attributes_ = newName();
  std::uint64_t lastChange_ = 0;
  support::Process consumers_;
  agent::Notifier notifier_;
};

}  // namespace bench

#endif
