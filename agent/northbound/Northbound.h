// The northbound side of the agent: managers, iterators and the admission of views.

#ifndef AGENT_NORTHBOUND_NORTHBOUND_H
#define AGENT_NORTHBOUND_NORTHBOUND_H

#include <atomic>
#include <condition_variable>
#include <functional>
#include <string>
#include <thread>

#include "agent/base/RefusalLog.h"
#include "agent/northbound/GuardedManager.h"
#include "agent/northbound/IdleTrim.h"
#include "agent/northbound/IteratorRegistry.h"
#include "agent/northbound/ManagerRegistry.h"
#include "agent/northbound/ViewAdmission.h"
#include "agent/northbound/ViewSizes.h"
#include "orb/orb.h"
#include "sync/Mutex.h"

namespace agent {

// The limits of the manager's views. The functions are called from any thread.
struct ViewSetup {
  ViewLimits limits;
  // The size of a view of the current network. Empty: views need no memory.
  std::function<ViewSize(ViewKind, bool testSwitch)> sizeOf;
  // Whether the process may allocate so many more bytes. Empty: always.
  ViewAdmission::Allows allows;
  // Returns freed memory of the process to the system. Called on the housekeeper thread; throws
  // nothing. Empty: freed memory is kept.
  std::function<void()> returnFreedMemory;
};

// Serves the managers and iterators of the loaded module, and reclaims idle iterators on a
// housekeeper thread. agent/host forwards the calls of the module to this object
// (host/RunningAgent.h).
//
// Thread-safety: any thread, except open and retire: one thread at a time, never within a request.
// Ownership: borrows the server, which outlives this object; owns the registries and the thread.
// Errors: open throws CORBA exceptions; the registries report errors as their headers say.
class Northbound {
 public:
  // emsName: the value of the "EMS" pair of every TMF name.
  Northbound(orb::Server& server, std::string emsName, bool testSwitch,
             const IteratorLimits& limits = {}, ViewSetup views = {});
  ~Northbound();

  Northbound(const Northbound&) = delete;
  Northbound& operator=(const Northbound&) = delete;

  // Opens the admissions and creates the POA of the iterators. REQUIRES: no module is loaded.
  void open();

  // Refuses waiting views, stops serving the objects of the module, and waits for running requests.
  // Afterwards the module can be unloaded.
  void retire();

  const std::string& emsName() const { return emsName_; }

  bool testSwitch() const { return testSwitch_.load(std::memory_order_relaxed); }
  void setTestSwitch(bool on) { testSwitch_.store(on, std::memory_order_relaxed); }

  ManagerRegistry& managers() { return managers_; }
  IteratorRegistry& iterators() { return iterators_; }

  ViewAdmission::Load views() { return admission_.load(); }
  ViewAdmission::Load informationRequests() { return information_.load(); }

  // Registers an iterator servant of the calling thread's view: IteratorRegistry::add with the size
  // of the iterator. Logs a refusal.
  FailureCode addIterator(PortableServer::ServantBase* servant);

 private:
  void housekeep();
  void reclaimIterators() noexcept;
  void returnIdleMemory();
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

  // The housekeeper thread reclaims idle iterators after each interval, and returns freed memory.
  const std::chrono::milliseconds interval_;
  Mutex mutex_;
  std::condition_variable stop_;
  bool stopping_ GUARDED_BY(mutex_) = false;
  IdleTrim trim_;  // used by the housekeeper alone
  std::thread housekeeper_;
};

}  // namespace agent

#endif
