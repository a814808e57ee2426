// The checks of CheckedCalls, called by the interceptor and the connectors.

#ifndef ORB_TAO_CHECKEDCALLS_H
#define ORB_TAO_CHECKEDCALLS_H

#include <string>

#include "orb/corba.h"

namespace orb {

// The functions do nothing without a check of the calling thread. They throw the exception of the
// check, and std::bad_alloc. Thread-safety: any thread.

// Checks the addresses of a reference to which a call of the thread is forwarded.
void checkForward(CORBA::Object_ptr target);

// Checks the numeric address of a new connection for a call of the thread.
void checkConnection(const std::string& address);

}  // namespace orb

#endif
