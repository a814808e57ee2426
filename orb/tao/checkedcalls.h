// Checks of outgoing calls.

#ifndef ORB_TAO_CHECKEDCALLS_H
#define ORB_TAO_CHECKEDCALLS_H

#include <string>

#include "orb/corba.h"

namespace orb {

// The functions throw the exception of the check of the calling thread, and std::bad_alloc.
// Thread-safety: any thread.

// Checks the addresses of a reference to which a call of the thread is forwarded.
void checkForward(CORBA::Object_ptr target);

// Checks the numeric address of a new connection for a call of the thread.
void checkConnection(const std::string& address);

}  // namespace orb

#endif
