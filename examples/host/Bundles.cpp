// platform/bundlemgr/, platform/framework/: service objects and published interfaces.
#include <algorithm>
#include <map>
#include <mutex>
#include "platform/bundlemgr/BundleMgr.h"
#include "platform/framework/ProcessException.h"

using namespace NS_BUNDLEMGR1;

ProcessException::~ProcessException() = default;
InterfaceNotExistException::~InterfaceNotExistException() = default;
ServiceInterface::~ServiceInterface() = default;
NULLServiceInterface::~NULLServiceInterface() = default;

ACE_mutex_t NS_BUNDLEMGR1::_g_actualmutex = [] {
  ACE_mutex_t mutex;
  ACE_OS::mutex_init(&mutex);
  return mutex;
}();

namespace {

struct Lock {
  Lock() { ACE_OS::mutex_lock(&_g_actualmutex); }
  ~Lock() { ACE_OS::mutex_unlock(&_g_actualmutex); }
};

std::vector<ServiceObjectBase*> services;  // guarded by _g_actualmutex

// The caller of CheckIFBuf may have locked _g_actualmutex, so the map has a mutex of its own.
std::mutex mapMutex;
std::map<std::string, InterfaceBuffer> buffers;  // a buffer is never removed

}  // namespace

void NS_BUNDLEMGR1::SetIFBuf(const std::string& name, ServiceInterface* interface) {
  const Lock lock;
  const std::lock_guard mapLock(mapMutex);
  buffers[name].Append(interface);
}

InterfaceBuffer* NS_BUNDLEMGR1::CheckIFBuf(const std::string& name) {
  const std::lock_guard mapLock(mapMutex);
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

void ServiceObjectBase::RemoveInterface() {
  const Lock lock;
  const std::lock_guard mapLock(mapMutex);
  for (auto& entry : buffers) entry.second.Remove(interface_);
  delete interface_;
  interface_ = nullptr;
}

const std::string& ServiceObjectBase::GetName() const { return serviceName_; }
ServiceInterface* ServiceObjectBase::GetInterface() { return interface_; }
int ServiceObjectBase::init(int, ACE_TCHAR*[]) { return 0; }
int ServiceObjectBase::fini() { return 0; }

BundleMgr* BundleMgr::Instance() {
  static BundleMgr instance;
  return &instance;
}

ServiceObjectBase* BundleMgr::GetServiceObject(const std::string& serviceName) {
  for (auto* service : GetServiceObjects())
    if (service->GetName() == serviceName) return service;
  return nullptr;
}

std::vector<ServiceObjectBase*> BundleMgr::GetServiceObjects() {
  const Lock lock;
  return services;
}
