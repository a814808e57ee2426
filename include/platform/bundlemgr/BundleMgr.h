// The bundle manager and the service objects that it loads.

#ifndef PLATFORM_BUNDLEMGR_BUNDLEMGR_H
#define PLATFORM_BUNDLEMGR_BUNDLEMGR_H

#include <string>
#include <vector>

#include "ace/Service_Object.h"
#include "platform/bundlemgr/ServiceInterface.h"
#include "platform/framework/Export.h"

namespace NS_BUNDLEMGR1 {

// Base class of every service object: a loaded plug-in, as the bundle manager sees it. The host
// implements the operations that are not pure.
//
// Thread-safety: none. The bundle manager calls load, init, fini and unload one at a time, on one
// thread. GetInterface alone may be called on any thread, with _g_actualmutex locked.
// Ownership: the loader owns the service object and deletes it; the service object owns its
// interface.
// Errors: init may throw; the bundle is then not initialised, and fini may still be called.
class PLATFORM_API ServiceObjectBase : public ACE_Service_Object {
 public:
  ServiceObjectBase(const std::string& bundleName, const std::string& serviceName);
  ServiceObjectBase(const ServiceObjectBase&) = delete;
  ServiceObjectBase& operator=(const ServiceObjectBase&) = delete;

  // Calls RemoveInterface and UnRegistSvc.
  ~ServiceObjectBase() override;

  // Removes the object from the bundle manager's list of service objects.
  virtual void UnRegistSvc();

  // The service name.
  virtual const std::string& GetName() const;

  // Appends the object to the bundle manager's list of service objects.
  virtual void RegistSvc();

  // The object's interface, owned by the object; null before CreateInterface.
  // REQUIRES: _g_actualmutex is locked.
  virtual ServiceInterface* GetInterface();

  // Makes the object's interface and stores it in interface_.
  virtual ServiceInterface* CreateInterface() = 0;

  // Removes the interface from every buffer, deletes it and sets interface_ to null.
  virtual void RemoveInterface();

  int fini() override;
  int init(int argc, ACE_TCHAR* argv[]) override;

 protected:
  ServiceInterface* interface_ = nullptr;  // owned

 private:
  std::string bundleName_;
  std::string serviceName_;
};

// The list of the service objects in the process.
//
// Thread-safety: any thread. REQUIRES: the caller has not locked _g_actualmutex.
// Ownership: the returned service objects belong to their loader; the pointers are valid until a
// service object is unloaded.
// Errors: the functions may throw std::bad_alloc.
class PLATFORM_API BundleMgr {
 public:
  // The bundle manager of the process, never null.
  static BundleMgr* Instance();

  // The service object with a service name; null when no service object has the name.
  ServiceObjectBase* GetServiceObject(const std::string& serviceName);

  // All service objects, in the order of their registration.
  std::vector<ServiceObjectBase*> GetServiceObjects();
};

}  // namespace NS_BUNDLEMGR1

#endif
