// Interfaces that bundles publish under a name, and the registry of the published interfaces.
//
// The lookup of the module, for each use of an interface (NAME: "DomainInterface",
// "CorbaUtilInterface", "SecurityIF"):
//   1. CheckIFBuf(NAME), without a lock. A buffer with an entry ends the lookup: First() is the
//      interface, and the name alone implies the type. The module makes no dynamic_cast here, so
//      a wrong object under one of the names is undefined behaviour.
//   2. BundleMgr::GetServiceObjects(), without a lock.
//   3. With _g_actualmutex locked: GetInterface() of each service object, in the order of the list.
//      The first interface that a dynamic_cast converts to the type is the result. When step 1
//      found an empty buffer, the module appends the result to the buffer.
//   4. Without a result: InterfaceNotExistException.
// An exception of the host in steps 1 to 3 ends the process: std::terminate, also during a request
// of a client and during an event.
//
// Without a "DomainInterface", views fail with code kInterfaceNotExist (the view below a
// subnetwork is empty). Without a "SecurityIF", the module has no events. Without a
// "CorbaUtilInterface", the first request that converts a name ends the process: host and bundles
// publish this interface before the load and keep it until the unload.
//
// The host defines the destructors (key functions, see framework/ProcessException.h). Texts are
// UTF-8.

#ifndef PLATFORM_BUNDLEMGR_SERVICEINTERFACE_H
#define PLATFORM_BUNDLEMGR_SERVICEINTERFACE_H

#include <atomic>
#include <string>
#include <vector>

#include "ace/OS_NS_Thread.h"
#include "platform/framework/Export.h"

namespace NS_BUNDLEMGR1 {

// Base class of every published interface.
//
// Thread-safety and errors: the operations of a subclass say both. Ownership: the publishing bundle
// owns the interface and deletes it through this class. The host deletes the placeholder that the
// module's CreateInterface returns, so both sides use one operator new and delete.
class PLATFORM_API ServiceInterface {
 public:
  ServiceInterface() = default;
  ServiceInterface(const ServiceInterface&) = delete;
  ServiceInterface& operator=(const ServiceInterface&) = delete;
  virtual ~ServiceInterface();
};

// Marks classes that must not be derived from.
class PLATFORM_API FinalClass {};

// A placeholder for an interface, without operations. Thread-safety: any thread; no state.
// Ownership: as ServiceInterface. Errors: none.
class PLATFORM_API NULLServiceInterface : public ServiceInterface, public FinalClass {
 public:
  NULLServiceInterface() = default;
  ~NULLServiceInterface() override;

  static const char* GetDescription() { return "NULLServiceInterface!"; }
};

// The interfaces published under a name, in the order of their publication.
//
// Thread-safety: First may be called on any thread without a lock. Append and Remove require that
// _g_actualmutex is locked, or that no other thread knows the buffer.
// Ownership: the buffer borrows the interfaces; their owners remove them before deleting them.
// Errors: Append and Remove may throw std::bad_alloc and then change nothing. The lookup ends the
// process in this case.
class InterfaceBuffer {
 public:
  // The interface that was published first; null for an empty buffer. The pointer is valid while
  // the interface is published.
  ServiceInterface* First() const { return first_.load(std::memory_order_acquire); }

  void Append(ServiceInterface* interface) {
    entries_.push_back(interface);
    first_.store(entries_.front(), std::memory_order_release);
  }

  // Removes every occurrence of an interface. REQUIRES: no thread uses the interface any more.
  void Remove(const ServiceInterface* interface) {
    std::vector<ServiceInterface*> kept;
    for (ServiceInterface* entry : entries_) {
      if (entry != interface) {
        kept.push_back(entry);
      }
    }
    entries_.swap(kept);
    first_.store(entries_.empty() ? nullptr : entries_.front(), std::memory_order_release);
  }

 private:
  std::vector<ServiceInterface*> entries_;  // guarded by _g_actualmutex
  std::atomic<ServiceInterface*> first_{nullptr};
};

// The mutex that the bundle manager and all bundles share. The mutex guards the contents of the
// interface buffers and every walk over the service objects.
//
// The host defines and initialises the mutex (ACE_OS::mutex_init) before it loads a module, and
// never destroys it. The mutex need not be recursive: the module never locks it twice on a thread.
// While the mutex is locked, the module calls GetInterface, First and Append, and nothing else of
// the host. Order of locks: _g_actualmutex first, then locks of the host that GetInterface takes;
// the host never waits for _g_actualmutex while it has one of those locks. When the mutex cannot be
// locked, the lookup skips step 3.
PLATFORM_API extern ACE_mutex_t _g_actualmutex;

// Publishes an interface under a name: appends the interface to the buffer of the name. The caller
// keeps the ownership, and keeps the interface alive while it is published. Any thread.
// REQUIRES: the caller has not locked _g_actualmutex.
// May raise: anything. The module calls SetIFBuf in the factory alone; the exception leaves the
// factory.
PLATFORM_API void SetIFBuf(const std::string& name, ServiceInterface* interface);

// The buffer of the interfaces published under a name; null when no interface was ever published
// under the name. Buffers live as long as the process. Any thread; the caller may have locked
// _g_actualmutex.
// Must not raise anything: ends the process. Every view and every event looks interfaces up.
PLATFORM_API InterfaceBuffer* CheckIFBuf(const std::string& name);

}  // namespace NS_BUNDLEMGR1

#endif
