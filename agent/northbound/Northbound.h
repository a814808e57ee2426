// The northbound side of the agent: what the module's contracts act on.

#ifndef AGENT_NORTHBOUND_NORTHBOUND_H
#define AGENT_NORTHBOUND_NORTHBOUND_H

#include <atomic>
#include <condition_variable>
#include <functional>
#include <string>
#include <thread>

#include "agent/base/RefusalLog.h"
#include "agent/northbound/GuardedManager.h"
#include "agent/northbound/IteratorRegistry.h"
#include "agent/northbound/ManagerRegistry.h"
#include "agent/northbound/ViewAdmission.h"
#include "agent/northbound/ViewSizes.h"
#include "orb/orb.h"
#include "sync/Mutex.h"

namespace agent {

// What the views of the manager may take.
struct ViewSetup {
  ViewLimits limits;
  // The size of a view of the network at this moment; none: views need nothing.
  std::function<ViewSize(ViewKind, bool testSwitch)> sizeOf;
  ViewAdmission::Allows allows;  // what the process may allocate; none: anything
};

// The functions and singletons of the contracts have no context of their own, so they act on the
// one instance that exists while a module is loaded.
class Northbound {
 public:
  // The server outlives this object. The ems name is the value of the "EMS" pair of every TMF name.
  Northbound(orb::Server& server, std::string emsName, bool testSwitch,
             const IteratorLimits& limits = {}, ViewSetup views = {});
  ~Northbound();

  Northbound(const Northbound&) = delete;
  Northbound& operator=(const Northbound&) = delete;

  // Gets ready for a module: iterators have their POA.
  void open();

  // Stops serving everything that the module made and waits until nothing of it is in use, so that
  // it can be unloaded. Not from within a request.
  void retire();

  const std::string& emsName() const { return emsName_; }

  bool testSwitch() const { return testSwitch_.load(std::memory_order_relaxed); }
  void setTestSwitch(bool on) { testSwitch_.store(on, std::memory_order_relaxed); }

  ManagerRegistry& managers() { return managers_; }
  IteratorRegistry& iterators() { return iterators_; }

  // Registers an iterator servant of this thread's view, as IteratorRegistry::add.
  FailureCode addIterator(PortableServer::ServantBase* servant);

 private:
  void housekeep();
  void reclaimIterators() noexcept;
  bool allows(std::size_t bytes);

  orb::Server& server_;
  const std::string emsName_;
  std::atomic<bool> testSwitch_;
  const ViewSetup views_;
  ViewAdmission admission_;
  ViewAdmission information_;
  IteratorRegistry iterators_;
  const ViewGuard guard_;
  ManagerRegistry managers_;
  RefusalLog refusedIterators_;

  // Reclaims idle iterators once in a while.
  const std::chrono::milliseconds interval_;
  Mutex mutex_;
  std::condition_variable stop_;
  bool stopping_ GUARDED_BY(mutex_) = false;
  std::thread housekeeper_;
};

}  // namespace agent

#endif
