// The edge between the module and the ORB.

#ifndef TOPOMANAGEMENTMGRIMPL_CORBAEDGE_H
#define TOPOMANAGEMENTMGRIMPL_CORBAEDGE_H

#include <exception>

#include "orb/idl/globaldefs.h"

namespace topo {

// Runs a servant operation. ProcessingFailureException and CORBA system exceptions pass to the
// client; anything else means that the platform is broken, and ends the process rather than being
// reported to a client as if it were the client's failure.
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
