// The bundle manager and the framework's exceptions.

#include <algorithm>
#include <map>
#include <memory>
#include <mutex>

#include "ace/OS_NS_Thread.h"
#include "platform/framework/ProcessException.h"
#include "tests/fakes/Bundles.h"
#include "tests/fakes/CorbaUtil.h"
#include "tests/fakes/Domain.h"
#include "tests/fakes/Journal.h"
#include "tests/fakes/Security.h"

ProcessException::~ProcessException() = default;
InterfaceNotExistException::~InterfaceNotExistException() = default;

namespace NS_BUNDLEMGR1 {

ACE_mutex_t _g_actualmutex = PTHREAD_MUTEX_INITIALIZER;

}  // namespace NS_BUNDLEMGR1

namespace fakes {
namespace {

using NS_BUNDLEMGR1::_g_actualmutex;
using NS_BUNDLEMGR1::InterfaceBuffer;
using NS_BUNDLEMGR1::ServiceInterface;
using NS_BUNDLEMGR1::ServiceObjectBase;

std::mutex mutex;
std::map<std::string, std::unique_ptr<InterfaceBuffer>>& buffers =
    *new std::map<std::string, std::unique_ptr<InterfaceBuffer>>;  // guarded by mutex
std::vector<ServiceObjectBase*>& services =
    *new std::vector<ServiceObjectBase*>;  // guarded by mutex
bool mutexFails = false;

InterfaceBuffer* findBuffer(const std::string& name) {
  const std::lock_guard<std::mutex> lock(mutex);
  const auto found = buffers.find(name);
  return found != buffers.end() ? found->second.get() : nullptr;
}

class SharedMutexLock {
 public:
  SharedMutexLock() : locked_(ACE_OS::mutex_lock(&_g_actualmutex) == 0) {}
  ~SharedMutexLock() {
    if (locked_) {
      ACE_OS::mutex_unlock(&_g_actualmutex);
    }
  }
  SharedMutexLock(const SharedMutexLock&) = delete;
  SharedMutexLock& operator=(const SharedMutexLock&) = delete;

 private:
  const bool locked_;
};

void withdraw(const ServiceInterface* interface) {
  const SharedMutexLock shared;
  const std::lock_guard<std::mutex> lock(mutex);
  for (const auto& buffer : buffers) {
    buffer.second->Remove(interface);
  }
}

// A service object that is in the list keeps its place.
void list(ServiceObjectBase* service) {
  const std::lock_guard<std::mutex> lock(mutex);
  if (std::find(services.begin(), services.end(), service) == services.end()) {
    services.push_back(service);
  }
}

void forget(const ServiceObjectBase* service) {
  const std::lock_guard<std::mutex> lock(mutex);
  services.erase(std::remove(services.begin(), services.end(), service), services.end());
}

void setMutexType(int type) {
  pthread_mutex_destroy(&_g_actualmutex);
  pthread_mutexattr_t attributes;
  pthread_mutexattr_init(&attributes);
  pthread_mutexattr_settype(&attributes, type);
  pthread_mutex_init(&_g_actualmutex, &attributes);
  pthread_mutexattr_destroy(&attributes);
}

}  // namespace

Bundle::Bundle(const std::string& serviceName, ServiceInterface* offered)
    : ServiceObjectBase("fake_bundle", serviceName) {
  interface_ = offered;
}

ServiceInterface* Bundle::CreateInterface() {
  return interface_;
}

InterfaceBuffer& openBuffer(const std::string& name) {
  const std::lock_guard<std::mutex> lock(mutex);
  std::unique_ptr<InterfaceBuffer>& buffer = buffers[name];
  if (!buffer) {
    buffer = std::make_unique<InterfaceBuffer>();
  }
  return *buffer;
}

void publish(const std::string& name, ServiceInterface* interface) {
  InterfaceBuffer& buffer = openBuffer(name);
  const SharedMutexLock shared;
  buffer.Append(interface);
}

void publishPlatform() {
  publish("DomainInterface", &domainInterface());
  publish("CorbaUtilInterface", &corbaUtil());
  publish("SecurityIF", &security());
}

void makeSharedMutexFail() {
  setMutexType(PTHREAD_MUTEX_ERRORCHECK);
  pthread_mutex_lock(&_g_actualmutex);
  mutexFails = true;
}

// Only the thread that has the mutex locked can unlock it.
bool sharedMutexIsHeld() {
  if (pthread_mutex_unlock(&_g_actualmutex) != 0) {
    return false;
  }
  pthread_mutex_lock(&_g_actualmutex);
  return true;
}

void resetBundles() {
  if (mutexFails) {
    pthread_mutex_unlock(&_g_actualmutex);
    setMutexType(PTHREAD_MUTEX_NORMAL);
    mutexFails = false;
  }
  const std::lock_guard<std::mutex> lock(mutex);
  buffers.clear();
  services.clear();
}

}  // namespace fakes

namespace NS_BUNDLEMGR1 {

using fakes::called;
using fakes::quoted;

ServiceInterface::~ServiceInterface() = default;

NULLServiceInterface::~NULLServiceInterface() {
  fakes::called("~NULLServiceInterface", "");
}

void SetIFBuf(const std::string& name, ServiceInterface* interface) {
  called("SetIFBuf", quoted(name));
  fakes::publish(name, interface);
}

InterfaceBuffer* CheckIFBuf(const std::string& name) {
  called("CheckIFBuf", quoted(name));
  return fakes::findBuffer(name);
}

BundleMgr* BundleMgr::Instance() {
  static BundleMgr manager;
  return &manager;
}

ServiceObjectBase* BundleMgr::GetServiceObject(const std::string& serviceName) {
  called("GetServiceObject", quoted(serviceName));
  const std::lock_guard<std::mutex> lock(fakes::mutex);
  for (ServiceObjectBase* service : fakes::services) {
    if (service->GetName() == serviceName) {
      return service;
    }
  }
  return nullptr;
}

std::vector<ServiceObjectBase*> BundleMgr::GetServiceObjects() {
  called("GetServiceObjects", "");
  const std::lock_guard<std::mutex> lock(fakes::mutex);
  return fakes::services;
}

ServiceObjectBase::ServiceObjectBase(const std::string& bundleName, const std::string& serviceName)
    : bundleName_(bundleName), serviceName_(serviceName) {
  called("ServiceObjectBase", quoted(bundleName) + ", " + quoted(serviceName));
  fakes::list(this);
}

ServiceObjectBase::~ServiceObjectBase() {
  called("~ServiceObjectBase", "");
  ServiceObjectBase::RemoveInterface();
  fakes::forget(this);
}

void ServiceObjectBase::UnRegistSvc() {
  called("UnRegistSvc", quoted(serviceName_));
  fakes::forget(this);
}

const std::string& ServiceObjectBase::GetName() const {
  return serviceName_;
}

void ServiceObjectBase::RegistSvc() {
  called("RegistSvc", quoted(serviceName_));
  fakes::list(this);
}

ServiceInterface* ServiceObjectBase::GetInterface() {
  called("GetInterface", quoted(serviceName_));
  return interface_;
}

void ServiceObjectBase::RemoveInterface() {
  if (interface_ != nullptr) {
    fakes::withdraw(interface_);
    delete interface_;
    interface_ = nullptr;
  }
}

int ServiceObjectBase::fini() {
  return static_cast<int>(called("ServiceObjectBase::fini", ""));
}

int ServiceObjectBase::init(int, ACE_TCHAR*[]) {
  called("ServiceObjectBase::init", "");
  return 0;
}

}  // namespace NS_BUNDLEMGR1
