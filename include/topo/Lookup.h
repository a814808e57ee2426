// Finding the platform's service interfaces by name and type.
//
// Thread-safety: every function from any thread. A found interface stays valid while its bundle
// leaves it published; it is looked up afresh for every use.

#ifndef TOPO_LOOKUP_H
#define TOPO_LOOKUP_H

#include <atomic>
#include <string>
#include <vector>

#include "platform/agent/CorbaUtilInterface.h"
#include "platform/bundlemgr/BundleMgr.h"
#include "platform/domain/DomainInterface.h"
#include "platform/framework/ProcessException.h"
#include "platform/security/SecurityIF.h"

namespace topo {

// The name under which an interface type is published.
template <typename Interface>
struct ServiceName;

template <>
struct ServiceName<NS_DOMAIN::DomainInterface> {
  static constexpr const char* value = "DomainInterface";
};

template <>
struct ServiceName<NS_CORBA::CorbaUtilInterface> {
  static constexpr const char* value = "CorbaUtilInterface";
};

template <>
struct ServiceName<NS_SECURITY_SERVICE1::SecurityIF> {
  static constexpr const char* value = "SecurityIF";
};

// Null until the first lookup of the interface, then a placeholder for as long as the module is
// loaded: the framework's mark that this module uses the interface.
template <typename Interface>
inline std::atomic<NS_BUNDLEMGR1::NULLServiceInterface*> placeholderSlot{nullptr};

// Holds a framework mutex, if it could be taken at all.
class FrameworkLock {
 public:
  explicit FrameworkLock(ACE_mutex_t& mutex)
      : mutex_(mutex), locked_(ACE_OS::mutex_lock(&mutex) == 0) {}

  ~FrameworkLock() {
    if (locked_) {
      ACE_OS::mutex_unlock(&mutex_);
    }
  }

  FrameworkLock(const FrameworkLock&) = delete;
  FrameworkLock& operator=(const FrameworkLock&) = delete;

  bool locked() const { return locked_; }

 private:
  ACE_mutex_t& mutex_;
  const bool locked_;
};

// One lookup of one interface, built on the stack.
template <typename Interface>
class ServiceInterfaceRef {
 public:
  ServiceInterfaceRef() { fillPlaceholderSlot(); }

  // The interface; throws InterfaceNotExistException and nothing else.
  Interface* get() {
    Interface* found = find();
    if (found == nullptr) {
      throw InterfaceNotExistException();
    }
    return found;
  }

 private:
  // The slot is filled without the mutex when that cannot be taken; the placeholder is one object
  // whoever stores it.
  void fillPlaceholderSlot() {
    if (placeholderSlot_.load(std::memory_order_acquire) != nullptr) {
      return;
    }
    const FrameworkLock lock(mutex_);
    if (placeholderSlot_.load(std::memory_order_relaxed) == nullptr) {
      // Not on the heap: nothing of it may be left behind when the module is unmapped.
      static NS_BUNDLEMGR1::NULLServiceInterface placeholder;
      placeholderSlot_.store(&placeholder, std::memory_order_release);
    }
  }

  // Anything that the bundle manager throws ends the process: the lookup has one failure only.
  Interface* find() noexcept {
    buffer_ = NS_BUNDLEMGR1::CheckIFBuf(ServiceName<Interface>::value);
    NS_BUNDLEMGR1::ServiceInterface* published = buffer_ != nullptr ? buffer_->First() : nullptr;
    // What is published under the name has the type that goes with the name.
    return published != nullptr ? static_cast<Interface*>(published) : search(candidates());
  }

  std::vector<NS_BUNDLEMGR1::ServiceObjectBase*> candidates() {
    NS_BUNDLEMGR1::BundleMgr* bundleMgr = NS_BUNDLEMGR1::BundleMgr::Instance();
    if (!serviceName_.empty()) {
      if (NS_BUNDLEMGR1::ServiceObjectBase* named = bundleMgr->GetServiceObject(serviceName_)) {
        return {named};
      }
    }
    return bundleMgr->GetServiceObjects();
  }

  Interface* search(const std::vector<NS_BUNDLEMGR1::ServiceObjectBase*>& services) {
    const FrameworkLock lock(mutex_);
    if (!lock.locked()) {
      return nullptr;
    }
    for (NS_BUNDLEMGR1::ServiceObjectBase* service : services) {
      if (auto* found = dynamic_cast<Interface*>(service->GetInterface())) {
        publish(found);
        return found;
      }
    }
    return nullptr;
  }

  // Later lookups find it in the buffer. REQUIRES: mutex_ is held.
  void publish(Interface* found) {
    if (buffer_ != nullptr && buffer_->First() == nullptr) {
      buffer_->Append(found);
    }
  }

  NS_BUNDLEMGR1::InterfaceBuffer* buffer_ = nullptr;
  ACE_mutex_t& mutex_ = NS_BUNDLEMGR1::_g_actualmutex;
  const std::string serviceName_;  // empty: all service objects are candidates
  std::atomic<NS_BUNDLEMGR1::NULLServiceInterface*>& placeholderSlot_ = placeholderSlot<Interface>;
};

// The interface of a type. Throws InterfaceNotExistException when no bundle offers it.
template <typename Interface>
Interface* lookup() {
  return ServiceInterfaceRef<Interface>().get();
}

// The domain as the CORBA northbound sees it; every topology read goes through it. Throws
// InterfaceNotExistException.
inline NS_DOMAIN::DomainFacet* GetCorbaDomain() {
  return lookup<NS_DOMAIN::DomainInterface>()->GetFacet("CORBA");
}

}  // namespace topo

#endif
