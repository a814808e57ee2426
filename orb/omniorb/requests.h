// Interception of requests from other processes.

#ifndef ORB_OMNIORB_REQUESTS_H
#define ORB_OMNIORB_REQUESTS_H

#include "orb/orb.h"

namespace orb {

// Installs the interceptor of this file until the ORB is destroyed. The ORB reads its list of
// interceptors without a lock, so the list must not change while the ORB listens.
// REQUIRES: an ORB is initialised and does not listen yet.
void interceptRequests();

// Returns the description of a request for a RequestGuard.
Request requestOf(omniCallHandle& call);

// Sets the observer; null removes the observer. Returns when no call of the former observer is
// running. Thread-safety: any thread.
void setRequestObserver(RequestObserver observer);

}  // namespace orb

#endif
