// The module of a host, with the POAs of the module's objects.

#ifndef HOST_DEFAULTS_MODULE_H
#define HOST_DEFAULTS_MODULE_H

#include <functional>
#include <string>

#include "host_defaults/ModuleFile.h"
#include "orb/corba.h"
#include "platform/framework/Export.h"

namespace host_defaults {

// Loads the module after its POAs were opened, and unloads the module after its servants have
// ended. For a host whose ORB can wait for all running requests.
//
// Thread-safety: one thread loads and unloads; it serves no request and handles no event. While
// requests run, any thread may read the POAs.
// Ownership: owns the POAs; the accessors return borrowed references.
// Errors: each function says what it throws.
class PLATFORM_API Module {
 public:
  // drainEvents waits until the event handlers have handled all events that were raised before.
  explicit Module(std::function<void()> drainEvents);

  // REQUIRES: nothing is loaded, or the servants have ended with the ORB.
  ~Module();

  Module(const Module&) = delete;
  Module& operator=(const Module&) = delete;

  // Opens the POAs below the root and loads the file. After a failure nothing is loaded. Throws
  // std::runtime_error with the reason, also when the module is loaded already; CORBA exceptions of
  // the root POA.
  void load(const std::string& path, PortableServer::POA_ptr root);

  // Ends the manager and the iterators, waits for their requests, drains the events, and unloads
  // the file. Does nothing when nothing is loaded. Throws CORBA exceptions and those of
  // drainEvents; the module then stays loaded and serves no request.
  void unload();

  // PERSISTENT and USER_ID: a reference is valid again after the next load. Nil while no module is
  // loaded.
  PortableServer::POA_ptr managerPoa() const;

  // A new reference to the servant that is active under this name in managerPoa(). Throws
  // std::runtime_error when there is none. REQUIRES: a module is loaded.
  CORBA::Object_ptr reference(const std::string& name) const;

  // The default policies. Nil while no module is loaded.
  PortableServer::POA_ptr iteratorPoa() const;

 private:
  const std::function<void()> drainEvents_;
  ModuleFile file_;
  PortableServer::POA_var managerPoa_;
  PortableServer::POA_var iteratorPoa_;
};

}  // namespace host_defaults

#endif
