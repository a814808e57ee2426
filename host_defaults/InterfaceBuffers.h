// The interface buffers of the process by name, which both contract headers of bundlemgr/ use.

#ifndef HOST_DEFAULTS_INTERFACEBUFFERS_H
#define HOST_DEFAULTS_INTERFACEBUFFERS_H

#include <atomic>
#include <memory>
#include <string>

#include "platform/bundlemgr/ServiceInterface.h"
#include "sync/Mutex.h"

namespace host_defaults {

// Locks the mutex that the bundle manager and all bundles share until the end of the scope. Not
// recursive. Thread-safety: one thread. Ownership: borrows the mutex. Errors: none.
class BundleLock {
 public:
  BundleLock() { ACE_OS::mutex_lock(&NS_BUNDLEMGR1::_g_actualmutex); }
  ~BundleLock() { ACE_OS::mutex_unlock(&NS_BUNDLEMGR1::_g_actualmutex); }

  BundleLock(const BundleLock&) = delete;
  BundleLock& operator=(const BundleLock&) = delete;
};

// Thread-safety: any thread; find() takes no lock, because the module calls it for every name. The
// contents of a buffer are guarded by _g_actualmutex. Ownership: owns the buffers, and destroys
// them at the end of the process, so that pointers to a buffer stay valid. Errors: findOrMake()
// throws std::bad_alloc.
class InterfaceBuffers {
 public:
  static InterfaceBuffers& instance();

  InterfaceBuffers() = default;
  ~InterfaceBuffers();
  InterfaceBuffers(const InterfaceBuffers&) = delete;
  InterfaceBuffers& operator=(const InterfaceBuffers&) = delete;

  // Null when no interface was ever published under the name.
  NS_BUNDLEMGR1::InterfaceBuffer* find(const std::string& name) const;

  NS_BUNDLEMGR1::InterfaceBuffer* findOrMake(const std::string& name);

  // REQUIRES: _g_actualmutex is held.
  void removeEverywhere(const NS_BUNDLEMGR1::ServiceInterface* interface);

 private:
  // Constant but for the buffer, which has its own lock.
  struct Entry {
    std::string name;
    std::unique_ptr<Entry> next;
    NS_BUNDLEMGR1::InterfaceBuffer buffer;
  };

  Mutex mutex_;  // held by findOrMake()
  // A list, newest entry first. The process publishes a handful of names.
  std::atomic<Entry*> newest_{nullptr};
};

}  // namespace host_defaults

#endif
