// The interface buffers of the process by name, which both contract headers of bundlemgr/ use.

#ifndef AGENT_HOST_INTERFACEBUFFERS_H
#define AGENT_HOST_INTERFACEBUFFERS_H

#include <map>
#include <memory>
#include <string>

#include "platform/bundlemgr/ServiceInterface.h"
#include "sync/Mutex.h"

namespace agent {

// Locks the mutex that the bundle manager and all bundles share until the end of the scope. Not
// recursive. Thread-safety: one thread. Ownership: borrows the mutex. Errors: none.
class BundleLock {
 public:
  BundleLock() { ACE_OS::mutex_lock(&NS_BUNDLEMGR1::_g_actualmutex); }
  ~BundleLock() { ACE_OS::mutex_unlock(&NS_BUNDLEMGR1::_g_actualmutex); }

  BundleLock(const BundleLock&) = delete;
  BundleLock& operator=(const BundleLock&) = delete;
};

// Thread-safety: any thread. The contents of a buffer are guarded by _g_actualmutex. Ownership:
// owns the buffers and never destroys a buffer, so that pointers to a buffer stay valid. Errors:
// std::bad_alloc.
class InterfaceBuffers {
 public:
  static InterfaceBuffers& instance();

  // Null when no interface was ever published under the name.
  NS_BUNDLEMGR1::InterfaceBuffer* find(const std::string& name) const;

  NS_BUNDLEMGR1::InterfaceBuffer* findOrMake(const std::string& name);

  // REQUIRES: _g_actualmutex is held.
  void removeEverywhere(const NS_BUNDLEMGR1::ServiceInterface* interface);

 private:
  mutable Mutex mutex_;
  std::map<std::string, std::unique_ptr<NS_BUNDLEMGR1::InterfaceBuffer>> buffers_
      GUARDED_BY(mutex_);
};

}  // namespace agent

#endif
