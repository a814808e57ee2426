// Finds the platform's service interfaces by name and type.
//
// Thread-safety: any thread. Ownership: the publishing bundle owns an interface, which is valid
// while it is published; callers look up the interface again for each use.
// Errors: InterfaceNotExistException when no bundle offers the interface; any other failure ends
// the process.

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

// The name under which bundles publish an interface type.
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

// Declares to the framework that the module uses the interface: null until the first lookup, then a
// placeholder until the module is unloaded.
template <typename Interface>
inline std::atomic<NS_BUNDLEMGR1::NULLServiceInterface*> placeholderSlot{nullptr};

// Locks a framework mutex for a scope. A failed lock is not an error: see locked().
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

// A lookup of an interface. Thread-safety: none; each lookup makes its own object.
template <typename Interface>
class ServiceInterfaceRef {
 public:
  ServiceInterfaceRef() { fillPlaceholderSlot(); }

  // Returns the interface, never null. Throws InterfaceNotExistException only.
  Interface* get() {
    Interface* found = find();
    if (found == nullptr) {
      throw InterfaceNotExistException();
    }
    return found;
  }

 private:
  // Fills the slot without the mutex when the mutex cannot be locked: every thread stores the same
  // placeholder.
  void fillPlaceholderSlot() {
    if (placeholderSlot_.load(std::memory_order_acquire) != nullptr) {
      return;
    }
    const FrameworkLock lock(mutex_);
    if (placeholderSlot_.load(std::memory_order_relaxed) == nullptr) {
      // Static: a heap object would leak when the module is unloaded.
      static NS_BUNDLEMGR1::NULLServiceInterface placeholder;
      placeholderSlot_.store(&placeholder, std::memory_order_release);
    }
  }

  // noexcept: an exception of the bundle manager ends the process.
  Interface* find() noexcept {
    // Static: the module looks interfaces up for every name, and the texts are too long for a
    // string without an allocation.
    static const std::string name(ServiceName<Interface>::value);
    buffer_ = NS_BUNDLEMGR1::CheckIFBuf(name);
    NS_BUNDLEMGR1::ServiceInterface* published = buffer_ != nullptr ? buffer_->First() : nullptr;
    // The name implies the type.
    return published != nullptr ? static_cast<Interface*>(published) : search();
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

  // Searches all candidates. Not inlined, so that a lookup that finds the name in a buffer takes
  // few instructions.
  [[gnu::noinline]] Interface* search() {
    const std::vector<NS_BUNDLEMGR1::ServiceObjectBase*> services = candidates();
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

  // Later lookups use the buffer. REQUIRES: mutex_ is locked.
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

// Returns the interface of a type.
template <typename Interface>
Interface* lookup() {
  return ServiceInterfaceRef<Interface>().get();
}

// Returns the domain facet of the client "CORBA", which all domain queries of the module use.
inline NS_DOMAIN::DomainFacet* GetCorbaDomain() {
  return lookup<NS_DOMAIN::DomainInterface>()->GetFacet("CORBA");
}

}  // namespace topo

#endif
