// platform/bundlemgr/, platform/framework/: service objects and published interfaces.

#include <algorithm>
#include <map>
#include <mutex>

#include "platform/bundlemgr/BundleMgr.h"
#include "platform/framework/ProcessException.h"

ProcessException::~ProcessException() = default;
InterfaceNotExistException::~InterfaceNotExistException() = default;

namespace NS_BUNDLEMGR1 {
namespace {

ACE_mutex_t initializedMutex() {
  ACE_mutex_t mutex;
  ACE_OS::mutex_init(&mutex);
  return mutex;
}

class Lock {
 public:
  Lock() { ACE_OS::mutex_lock(&_g_actualmutex); }
  ~Lock() { ACE_OS::mutex_unlock(&_g_actualmutex); }
  Lock(const Lock&) = delete;
  Lock& operator=(const Lock&) = delete;
};

std::vector<ServiceObjectBase*> services;  // guarded by _g_actualmutex

// Callers of CheckIFBuf may have locked _g_actualmutex, so the map has a mutex of its own.
std::mutex buffersMutex;
std::map<std::string, InterfaceBuffer> buffers;  // a buffer is never removed

}  // namespace

ACE_mutex_t _g_actualmutex = initializedMutex();

ServiceInterface::~ServiceInterface() = default;
NULLServiceInterface::~NULLServiceInterface() = default;

void SetIFBuf(const std::string& name, ServiceInterface* interface) {
  InterfaceBuffer* buffer = nullptr;
  {
    const std::lock_guard<std::mutex> lock(buffersMutex);
    buffer = &buffers[name];
  }
  const Lock lock;
  buffer->Append(interface);
}

InterfaceBuffer* CheckIFBuf(const std::string& name) {
  const std::lock_guard<std::mutex> lock(buffersMutex);
  const auto found = buffers.find(name);
  return found == buffers.end() ? nullptr : &found->second;
}

// The module overrides RegistSvc with an empty body, so the constructor lists the object.
ServiceObjectBase::ServiceObjectBase(const std::string& bundleName, const std::string& serviceName)
    : bundleName_(bundleName), serviceName_(serviceName) {
  ServiceObjectBase::RegistSvc();
}

ServiceObjectBase::~ServiceObjectBase() {
  ServiceObjectBase::UnRegistSvc();
  ServiceObjectBase::RemoveInterface();
}

void ServiceObjectBase::RegistSvc() {
  const Lock lock;
  services.push_back(this);
}

void ServiceObjectBase::UnRegistSvc() {
  const Lock lock;
  services.erase(std::remove(services.begin(), services.end(), this), services.end());
}

const std::string& ServiceObjectBase::GetName() const {
  return serviceName_;
}

ServiceInterface* ServiceObjectBase::GetInterface() {
  return interface_;
}

void ServiceObjectBase::RemoveInterface() {
  const Lock lock;
  const std::lock_guard<std::mutex> buffersLock(buffersMutex);
  for (auto& entry : buffers) {
    entry.second.Remove(interface_);
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
  const Lock lock;
  const auto found = std::find_if(services.begin(), services.end(), [&](ServiceObjectBase* each) {
    return each->GetName() == serviceName;
  });
  return found == services.end() ? nullptr : *found;
}

std::vector<ServiceObjectBase*> BundleMgr::GetServiceObjects() {
  const Lock lock;
  return services;
}

}  // namespace NS_BUNDLEMGR1
