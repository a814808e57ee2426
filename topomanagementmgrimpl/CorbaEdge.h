// The exception boundary between the module and the ORB.

#ifndef TOPOMANAGEMENTMGRIMPL_CORBAEDGE_H
#define TOPOMANAGEMENTMGRIMPL_CORBAEDGE_H

#include <exception>

#include "orb/idl/globaldefs.h"

namespace topo {

// Runs a servant operation. Passes ProcessingFailureException and CORBA system exceptions to the
// ORB, which reports them to the client. Any other exception means that the platform is broken:
// atCorbaEdge then ends the process. Thread-safety: any thread.
template <typename Operation>
auto atCorbaEdge(const Operation& operation) -> decltype(operation()) {
  try {
    return operation();
  } catch (const globaldefs::ProcessingFailureException&) {
    throw;
  } catch (const CORBA::SystemException&) {
    throw;
  } catch (...) {
    std::terminate();
  }
}

}  // namespace topo

#endif
