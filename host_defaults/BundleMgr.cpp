// Defines platform/bundlemgr/BundleMgr.h: service objects and the list of them.

#include "platform/bundlemgr/BundleMgr.h"

#include <algorithm>

#include "host_defaults/InterfaceBuffers.h"

namespace NS_BUNDLEMGR1 {
namespace {

using host_defaults::BundleLock;

// In the order in which they were added. Guarded by _g_actualmutex.
std::vector<ServiceObjectBase*>& serviceObjects() {
  static std::vector<ServiceObjectBase*> instance;
  return instance;
}

}  // namespace

ServiceObjectBase::ServiceObjectBase(const std::string& bundleName, const std::string& serviceName)
    : bundleName_(bundleName), serviceName_(serviceName) {
  ServiceObjectBase::RegistSvc();
}

ServiceObjectBase::~ServiceObjectBase() {
  ServiceObjectBase::UnRegistSvc();
  ServiceObjectBase::RemoveInterface();
}

void ServiceObjectBase::RegistSvc() {
  const BundleLock lock;
  std::vector<ServiceObjectBase*>& objects = serviceObjects();
  if (std::find(objects.begin(), objects.end(), this) == objects.end()) {
    objects.push_back(this);
  }
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
    host_defaults::InterfaceBuffers::instance().removeEverywhere(interface_);
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
