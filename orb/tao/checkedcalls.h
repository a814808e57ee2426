// Checks of outgoing calls.

#ifndef ORB_TAO_CHECKEDCALLS_H
#define ORB_TAO_CHECKEDCALLS_H

#include "orb/corba.h"

namespace orb {

// Checks the addresses of a reference to which a call of the thread is forwarded. Throws the
// exception of the check, and std::bad_alloc. Thread-safety: any thread.
void checkForward(CORBA::Object_ptr target);

}  // namespace orb

#endif
