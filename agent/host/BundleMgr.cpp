// The bundle manager: published interfaces and loaded service objects.

#include "platform/bundlemgr/BundleMgr.h"

#include <algorithm>
#include <map>
#include <memory>
#include <mutex>
#include <shared_mutex>

namespace NS_BUNDLEMGR1 {
namespace {

ACE_mutex_t initializedMutex() {
  ACE_mutex_t mutex;
  ACE_OS::mutex_init(&mutex);
  return mutex;
}

class BundleLock {
 public:
  BundleLock() { ACE_OS::mutex_lock(&_g_actualmutex); }
  ~BundleLock() { ACE_OS::mutex_unlock(&_g_actualmutex); }
  BundleLock(const BundleLock&) = delete;
  BundleLock& operator=(const BundleLock&) = delete;
};

// The buffers by name. A buffer never goes away, so that a pointer to one stays good.
class InterfaceBuffers {
 public:
  InterfaceBuffer* find(const std::string& name) const {
    const std::shared_lock<std::shared_mutex> lock(mutex_);
    const auto entry = buffers_.find(name);
    return entry != buffers_.end() ? entry->second.get() : nullptr;
  }

  InterfaceBuffer* findOrMake(const std::string& name) {
    const std::unique_lock<std::shared_mutex> lock(mutex_);
    std::unique_ptr<InterfaceBuffer>& buffer = buffers_[name];
    if (!buffer) {
      buffer = std::make_unique<InterfaceBuffer>();
    }
    return buffer.get();
  }

  void removeEverywhere(const ServiceInterface* interface) {
    const std::unique_lock<std::shared_mutex> lock(mutex_);
    for (const auto& entry : buffers_) {
      entry.second->Remove(interface);
    }
  }

 private:
  mutable std::shared_mutex mutex_;
  std::map<std::string, std::unique_ptr<InterfaceBuffer>> buffers_;  // guarded by mutex_
};

InterfaceBuffers& buffers() {
  static InterfaceBuffers instance;
  return instance;
}

// In the order of registration. Guarded by _g_actualmutex.
std::vector<ServiceObjectBase*>& serviceObjects() {
  static std::vector<ServiceObjectBase*> instance;
  return instance;
}

}  // namespace

ACE_mutex_t _g_actualmutex = initializedMutex();

ServiceInterface::~ServiceInterface() = default;
NULLServiceInterface::~NULLServiceInterface() = default;

void SetIFBuf(const std::string& name, ServiceInterface* interface) {
  InterfaceBuffer* buffer = buffers().findOrMake(name);
  const BundleLock lock;
  buffer->Append(interface);
}

InterfaceBuffer* CheckIFBuf(const std::string& name) {
  return buffers().find(name);
}

ServiceObjectBase::ServiceObjectBase(const std::string& bundleName, const std::string& serviceName)
    : bundleName_(bundleName), serviceName_(serviceName) {}

ServiceObjectBase::~ServiceObjectBase() {
  ServiceObjectBase::UnRegistSvc();
  ServiceObjectBase::RemoveInterface();
}

void ServiceObjectBase::RegistSvc() {
  const BundleLock lock;
  serviceObjects().push_back(this);
}

void ServiceObjectBase::UnRegistSvc() {
  const BundleLock lock;
  std::vector<ServiceObjectBase*>& objects = serviceObjects();
  objects.erase(std::remove(objects.begin(), objects.end(), this), objects.end());
}

const std::string& ServiceObjectBase::GetName() const {
  return serviceName_;
}

ServiceInterface* ServiceObjectBase::GetInterface() {
  return interface_;
}

void ServiceObjectBase::RemoveInterface() {
  {
    const BundleLock lock;
    buffers().removeEverywhere(interface_);
  }
  delete interface_;
  interface_ = nullptr;
}

int ServiceObjectBase::init(int, ACE_TCHAR*[]) {
  return 0;
}

int ServiceObjectBase::fini() {
  return 0;
}

BundleMgr* BundleMgr::Instance() {
  static BundleMgr instance;
  return &instance;
}

ServiceObjectBase* BundleMgr::GetServiceObject(const std::string& serviceName) {
  const BundleLock lock;
  for (ServiceObjectBase* object : serviceObjects()) {
    if (object->GetName() == serviceName) {
      return object;
    }
  }
  return nullptr;
}

std::vector<ServiceObjectBase*> BundleMgr::GetServiceObjects() {
  const BundleLock lock;
  return serviceObjects();
}

}  // namespace NS_BUNDLEMGR1
