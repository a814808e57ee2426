// The place where every request from outside passes.

#ifndef ORB_OMNIORB_REQUESTS_H
#define ORB_OMNIORB_REQUESTS_H

#include "orb/orb.h"

namespace orb {

// Null ends the observation; returns when no call of the former observer is running.
void setRequestObserver(RequestObserver observer);

// REQUIRES: an ORB is initialised.
void interceptRequests(bool on);

}  // namespace orb

#endif
