// An ORB that serves requests.

#ifndef HOST_DEFAULTS_RUNNINGORB_H
#define HOST_DEFAULTS_RUNNINGORB_H

#include <thread>

#include "orb/corba.h"
#include "platform/framework/Export.h"

namespace host_defaults {

// Runs an ORB on a thread of its own, because the thread that loads and unloads the module must not
// serve requests.
//
// Thread-safety: one thread makes and destroys the object; any thread may use the accessors.
// Ownership: owns the ORB; the accessors return borrowed references.
// Errors: the constructor throws CORBA exceptions and std::system_error.
class PLATFORM_API RunningOrb {
 public:
  // Takes over the reference, activates the POA manager of the root POA, and starts the thread.
  explicit RunningOrb(CORBA::ORB_ptr orb);

  // Waits for the running requests, then ends and destroys the ORB.
  // REQUIRES: the module is unloaded, and the host has dropped its references to remote objects.
  ~RunningOrb();

  RunningOrb(const RunningOrb&) = delete;
  RunningOrb& operator=(const RunningOrb&) = delete;

  CORBA::ORB_ptr get() const { return orb_.in(); }
  PortableServer::POA_ptr rootPoa() const { return root_.in(); }

 private:
  void run();

  const CORBA::ORB_var orb_;
  PortableServer::POA_var root_;
  std::thread thread_;
};

}  // namespace host_defaults

#endif
