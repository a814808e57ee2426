// Interception of outgoing calls.

#ifndef ORB_OMNIORB_CHECKEDCALLS_H
#define ORB_OMNIORB_CHECKEDCALLS_H

namespace orb {

// Installs the interceptors of CheckedCalls until the ORB is destroyed.
// REQUIRES: an ORB is initialised, and no thread makes a call.
void interceptCalls();

}  // namespace orb

#endif
