// The interface buffers of the process by name, which both contract headers of bundlemgr/ use.

#ifndef AGENT_HOST_INTERFACEBUFFERS_H
#define AGENT_HOST_INTERFACEBUFFERS_H

#include <map>
#include <memory>
#include <string>

#include "platform/bundlemgr/ServiceInterface.h"
#include "sync/Mutex.h"

namespace agent {

// Holds the mutex that the bundle manager and all bundles share.
class BundleLock {
 public:
  BundleLock() { ACE_OS::mutex_lock(&NS_BUNDLEMGR1::_g_actualmutex); }
  ~BundleLock() { ACE_OS::mutex_unlock(&NS_BUNDLEMGR1::_g_actualmutex); }

  BundleLock(const BundleLock&) = delete;
  BundleLock& operator=(const BundleLock&) = delete;
};

// Owns the buffers. A buffer is never destroyed, so that pointers to a buffer stay valid.
//
// Thread-safety: any thread. The contents of a buffer are guarded by _g_actualmutex.
class InterfaceBuffers {
 public:
  static InterfaceBuffers& instance();

  // Null when nothing was ever published under the name.
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
