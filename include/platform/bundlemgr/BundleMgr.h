// The bundle manager and the service objects that it loads. Texts are UTF-8.
//
// The life of a service object of the module:
//   1. The loader (ACE Service Configurator) calls the exported factory `_make_zu_corba_topo`.
//   2. The factory constructs the object, and the base's constructor adds the object to the list.
//   3. The factory calls CreateInterface and publishes the interface with
//      SetIFBuf("NULLServiceInterface", interface). The host does not repeat either call.
//   4. The loader calls init. The init of the module does not call the init of the base.
//   5. The loader calls fini. The fini of the module first calls the fini of the base.
//   6. The loader calls the destroy function of the factory, which deletes the object. The base's
//      destructor removes the object from the list and deletes the interface.
// Exceptions of steps 1 to 4 leave the module and pass through the loader.

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
// Errors: see each function. After an init that threw, the loader deletes the object without a call
// of fini, and the registrations before the exception stay. They belong to the loaded library, not
// to the object: a fini of any service object of the same load reverses them.
class PLATFORM_API ServiceObjectBase : public ACE_Service_Object {
 public:
  // Appends the object to the bundle manager's list of service objects. Not left to RegistSvc,
  // because a subclass may override RegistSvc: the module does, with an empty body.
  // May raise: anything; the exception leaves the factory.
  ServiceObjectBase(const std::string& bundleName, const std::string& serviceName);
  ServiceObjectBase(const ServiceObjectBase&) = delete;
  ServiceObjectBase& operator=(const ServiceObjectBase&) = delete;

  // Calls UnRegistSvc and RemoveInterface of this class. Must not raise anything: a destructor.
  ~ServiceObjectBase() override;

  // Removes the object from the list of service objects. Does nothing for an object that is not in
  // the list. The module does not call UnRegistSvc; the destructor does, so it must not raise
  // anything.
  virtual void UnRegistSvc();

  // The service name. The module does not call GetName. Must not raise anything.
  virtual const std::string& GetName() const;

  // Appends the object to the list of service objects. Does nothing for an object that is in the
  // list. The module never calls RegistSvc and overrides it with an empty body. May raise:
  // anything, to the host's own callers.
  virtual void RegistSvc();

  // The object's interface, owned by the object; null before CreateInterface.
  // REQUIRES: _g_actualmutex is locked; GetInterface does not lock it again.
  // Must not raise anything: ends the process. The lookups of every request and event call
  // GetInterface of every service object that is in the list.
  virtual ServiceInterface* GetInterface();

  // Makes the object's interface and stores it in interface_, without deleting an earlier one. The
  // module's override may raise std::bad_alloc; the factory, which is the only caller, passes it
  // on.
  virtual ServiceInterface* CreateInterface() = 0;

  // Removes the interface from every buffer, deletes it and sets interface_ to null. The module
  // does not call RemoveInterface; the destructor does, so it must not raise anything.
  virtual void RemoveInterface();

  // The module's fini calls the fini of the base first and ignores its result. The fini of the base
  // must not raise anything: the exception leaves the module's fini, which then neither unregisters
  // the manager nor unsubscribes. The module's fini returns 0, drops all other exceptions of the
  // host, and may follow a failed init, a missing init or another fini.
  int fini() override;

  // The module never calls the init of the base. The module's init returns 0, or raises the
  // exception of the host function that failed (AgentConfig.h; in test mode also
  // DomainInterface.h).
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
// Errors: none of the functions may raise anything, std::bad_alloc included: an exception ends the
// process. A lookup without an entry in its buffer calls Instance and GetServiceObjects, on the
// thread of a request or of an event.
class PLATFORM_API BundleMgr {
 public:
  // The bundle manager of the process, never null. Must not raise anything: ends the process.
  static BundleMgr* Instance();

  // The service object with a service name; null when no service object has the name. The module
  // does not call GetServiceObject: its lookups search all service objects. Must not raise
  // anything.
  ServiceObjectBase* GetServiceObject(const std::string& serviceName);

  // All service objects, in the order in which they were added to the list. Must not raise
  // anything: ends the process.
  std::vector<ServiceObjectBase*> GetServiceObjects();
};

}  // namespace NS_BUNDLEMGR1

#endif
