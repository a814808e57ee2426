#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "conformance/probe/Calls.h"
#include "conformance/probe/ProbeService.h"
#include "conformance/probe/Rules.h"
#include "platform/agent/CorbaUtilInterface.h"

namespace conformance::probe {
namespace {

using NS_BUNDLEMGR1::BundleMgr;
using NS_BUNDLEMGR1::CheckIFBuf;
using NS_BUNDLEMGR1::NULLServiceInterface;
using NS_BUNDLEMGR1::ServiceInterface;
using NS_BUNDLEMGR1::ServiceObjectBase;
using NS_BUNDLEMGR1::SetIFBuf;

// The name of a buffer that no rule has used before: buffers live as long as the process.
std::string newBufferName() {
  static int count = 0;
  return "topo-conformance " + std::to_string(reinterpret_cast<std::uintptr_t>(&count)) + ' ' +
         std::to_string(++count);
}

class Lock {
 public:
  Lock() : isLocked_(ACE_OS::mutex_lock(&NS_BUNDLEMGR1::_g_actualmutex) == 0) {}
  ~Lock() {
    if (isLocked_) {
      ACE_OS::mutex_unlock(&NS_BUNDLEMGR1::_g_actualmutex);
    }
  }
  Lock(const Lock&) = delete;
  Lock& operator=(const Lock&) = delete;

  bool isLocked() const { return isLocked_; }

 private:
  const bool isLocked_;
};

// A placeholder that counts its deletion.
class CountedInterface final : public ServiceInterface {
 public:
  explicit CountedInterface(int& deletions) : deletions_(deletions) {}
  ~CountedInterface() override { ++deletions_; }

 private:
  int& deletions_;
};

class ListedObject final : public ServiceObjectBase {
 public:
  explicit ListedObject(int& deletions)
      : ServiceObjectBase("topo-conformance", "topo-conformance"), deletions_(deletions) {}
  ServiceInterface* CreateInterface() override {
    interface_ = new CountedInterface(deletions_);
    return interface_;
  }

 private:
  int& deletions_;
};

bool isListed(const ServiceObjectBase* object) {
  const std::vector<ServiceObjectBase*> all = BundleMgr::Instance()->GetServiceObjects();
  return std::count(all.begin(), all.end(), object) == 1;
}

}  // namespace

void constructorListsTheObject() {
  const ServiceObjectBase* const service = ProbeService::current();
  require(isListed(service), "GetServiceObjects does not return the object exactly once");
  require(service->GetName() == "zu_corba_topo", "GetName is not the service name");
  require(BundleMgr::Instance()->GetServiceObject("zu_corba_topo") == service,
          "GetServiceObject does not find the object by its service name");
}

void interfacesArePublished() {
  required<NS_DOMAIN::DomainInterface>("DomainInterface");
  required<NS_CORBA::CorbaUtilInterface>("CorbaUtilInterface");
}

void buffersKeepTheOrder() {
  const std::string name = newBufferName();
  require(CheckIFBuf(name) == nullptr || CheckIFBuf(name)->First() == nullptr,
          "CheckIFBuf finds an interface that was never published");
  NULLServiceInterface first;
  NULLServiceInterface second;
  SetIFBuf(name, &first);
  SetIFBuf(name, &second);
  NS_BUNDLEMGR1::InterfaceBuffer* const buffer = CheckIFBuf(name);
  require(buffer != nullptr, "CheckIFBuf does not find a published interface");
  const bool isFirst = buffer->First() == &first;
  {
    const Lock lock;
    buffer->Remove(&first);
    buffer->Remove(&second);
  }
  require(isFirst, "First is not the interface that was published first");
  require(CheckIFBuf(name) == buffer, "a buffer does not live as long as the process");
}

void buffersAreFoundUnderTheLock() {
  const Lock lock;
  require(lock.isLocked(), "_g_actualmutex cannot be locked: the host has not initialised it");
  CheckIFBuf("DomainInterface");
}

void baseListsAndDeletes() {
  const std::string name = newBufferName();
  int deletions = 0;
  const std::vector<ServiceObjectBase*> others = BundleMgr::Instance()->GetServiceObjects();
  auto object = std::make_unique<ListedObject>(deletions);
  object->RegistSvc();
  require(isListed(object.get()), "GetServiceObjects does not return the object exactly once");
  SetIFBuf(name, object->CreateInterface());
  {
    const Lock lock;
    require(object->GetInterface() != nullptr, "GetInterface is null after CreateInterface");
  }
  object.reset();
  require(BundleMgr::Instance()->GetServiceObjects() == others,
          "a deleted service object is still listed");
  require(deletions == 1, "the interface of a deleted service object was deleted " +
                              std::to_string(deletions) + " times");
  require(CheckIFBuf(name)->First() == nullptr, "a deleted interface is still published");
}

}  // namespace conformance::probe
