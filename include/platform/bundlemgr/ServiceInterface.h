// What bundles publish under a name so that others can call them.
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

// Base of every published interface. Destroyed through this base.
class PLATFORM_API ServiceInterface {
 public:
  ServiceInterface() = default;
  ServiceInterface(const ServiceInterface&) = delete;
  ServiceInterface& operator=(const ServiceInterface&) = delete;
  virtual ~ServiceInterface();
};

// Marks classes that are not meant to be derived from.
class PLATFORM_API FinalClass {};

// A placeholder for an interface: offers nothing.
class PLATFORM_API NULLServiceInterface : public ServiceInterface, public FinalClass {
 public:
  NULLServiceInterface() = default;
  ~NULLServiceInterface() override;

  static const char* GetDescription() { return "NULLServiceInterface!"; }
};

// The interfaces published under one name, first come first.
//
// Thread-safety: First may be called at any time by any thread, without a lock. Append only with
// _g_actualmutex held, or while nobody else knows the buffer.
class InterfaceBuffer {
 public:
  // The interface that was published first, or null while there is none. It stays valid for as long
  // as its owner leaves it published.
  ServiceInterface* First() const { return first_.load(std::memory_order_acquire); }

  void Append(ServiceInterface* interface) {
    entries_.push_back(interface);
    first_.store(entries_.front(), std::memory_order_release);
  }

  // Takes every occurrence of an interface out, because it is about to go. REQUIRES: as Append, and
  // that nobody still uses the interface.
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

// The mutex that the bundle manager and all bundles share. It guards the contents of the interface
// buffers and every walk over the service objects.
PLATFORM_API extern ACE_mutex_t _g_actualmutex;

// Publishes an interface under a name, appending to the buffer of that name. The interface stays
// owned by the caller, who keeps it alive while it is published. Any thread, _g_actualmutex not
// held.
PLATFORM_API void SetIFBuf(const std::string& name, ServiceInterface* interface);

// The buffer of the interfaces published under a name; null when nobody ever published under it.
// A buffer lives as long as the process. Any thread, with or without _g_actualmutex.
PLATFORM_API InterfaceBuffer* CheckIFBuf(const std::string& name);

}  // namespace NS_BUNDLEMGR1

#endif
