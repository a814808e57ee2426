// The place where every request from outside passes.

#ifndef ORB_OMNIORB_REQUESTS_H
#define ORB_OMNIORB_REQUESTS_H

#include "orb/orb.h"

namespace orb {

// Lets the ORB show every request to this file, until the ORB is destroyed. The ORB's threads walk
// its lists of interceptors without a lock, so nothing is added or removed while it listens.
// REQUIRES: an ORB is initialised and does not listen yet.
void interceptRequests();

// What a guard may know of a request.
Request requestOf(omniCallHandle& call);

// Null ends the observation; returns when no call of the former observer is running.
// Thread-safety: any thread.
void setRequestObserver(RequestObserver observer);

}  // namespace orb

#endif
