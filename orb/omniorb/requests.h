// Interception of requests from other processes.

#ifndef ORB_OMNIORB_REQUESTS_H
#define ORB_OMNIORB_REQUESTS_H

#include "orb/orb.h"
#include "orb/requestcheck.h"

namespace orb {

// Installs the interceptors of this file until the ORB is destroyed. The ORB reads its lists of
// interceptors without a lock, so the lists must not change while the ORB listens. An empty meter
// measures nothing.
// REQUIRES: an ORB is initialised and does not listen yet.
void interceptRequests(RequestMeter meter);

// Returns the description of a request for a RequestGuard.
Request requestOf(omniCallHandle& call);

// Sets the observer; null removes the observer. Returns when no call of the former observer is
// running. Thread-safety: any thread.
void setRequestObserver(RequestObserver observer);

// As setRequestObserver(), for the check.
void setRequestCheck(RequestCheck check);

}  // namespace orb

#endif
