// Interfaces that bundles publish under a name, and the registry of the published interfaces.
//
// The host defines the destructors (key functions, see framework/ProcessException.h).

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
// owns the interface and deletes it through this class.
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
// Errors: Append and Remove may throw std::bad_alloc and then change nothing.
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
PLATFORM_API extern ACE_mutex_t _g_actualmutex;

// Publishes an interface under a name: appends the interface to the buffer of the name. The caller
// keeps the ownership, and keeps the interface alive while it is published. Any thread.
// REQUIRES: the caller has not locked _g_actualmutex.
PLATFORM_API void SetIFBuf(const std::string& name, ServiceInterface* interface);

// The buffer of the interfaces published under a name; null when no interface was ever published
// under the name. Buffers live as long as the process. Any thread; the caller may have locked
// _g_actualmutex.
PLATFORM_API InterfaceBuffer* CheckIFBuf(const std::string& name);

}  // namespace NS_BUNDLEMGR1

#endif
