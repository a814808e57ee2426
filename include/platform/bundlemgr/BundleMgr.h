// The bundle manager and the service objects that it loads.

#ifndef PLATFORM_BUNDLEMGR_BUNDLEMGR_H
#define PLATFORM_BUNDLEMGR_BUNDLEMGR_H

#include <string>
#include <vector>

#include "ace/Service_Object.h"
#include "platform/bundlemgr/ServiceInterface.h"
#include "platform/framework/Export.h"

namespace NS_BUNDLEMGR1 {

// Base of every service object: one loaded plug-in, seen by the bundle manager. The host implements
// it. Load, init, fini and unload come one at a time.
class PLATFORM_API ServiceObjectBase : public ACE_Service_Object {
 public:
  ServiceObjectBase(const std::string& bundleName, const std::string& serviceName);
  ServiceObjectBase(const ServiceObjectBase&) = delete;
  ServiceObjectBase& operator=(const ServiceObjectBase&) = delete;

  // Removes the interface and leaves the bundle manager's list.
  ~ServiceObjectBase() override;

  // Takes the object out of the bundle manager's list of service objects.
  virtual void UnRegistSvc();

  // The service name.
  virtual const std::string& GetName() const;

  // Puts the object into the bundle manager's list.
  virtual void RegistSvc();

  // The published interface, null before CreateInterface. Stays owned by the object. Called with
  // _g_actualmutex held.
  virtual ServiceInterface* GetInterface();

  // Makes the interface that this object publishes and keeps it; the object owns it.
  virtual ServiceInterface* CreateInterface() = 0;

  // Withdraws the interface from every buffer, destroys it and clears the pointer.
  virtual void RemoveInterface();

  int fini() override;
  int init(int argc, ACE_TCHAR* argv[]) override;

 protected:
  ServiceInterface* interface_ = nullptr;  // owned

 private:
  std::string bundleName_;
  std::string serviceName_;
};

// The list of service objects in the process.
class PLATFORM_API BundleMgr {
 public:
  static BundleMgr* Instance();

  // The service object with a service name, or null.
  ServiceObjectBase* GetServiceObject(const std::string& serviceName);

  // All service objects, in the order in which they were registered. _g_actualmutex is not held by
  // the caller, here and above. The pointers are good while nothing is unloaded.
  std::vector<ServiceObjectBase*> GetServiceObjects();
};

}  // namespace NS_BUNDLEMGR1

#endif
