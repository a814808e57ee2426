// The incoming connections in the ORB's own list.

#ifndef ORB_OMNIORB_STRANDS_H
#define ORB_OMNIORB_STRANDS_H

#include <omniORB4/CORBA.h>
// The ORB's internal headers do not include each other, so their order is fixed.
// clang-format off
#include <omniORB4/internal/giopStrand.h>
// clang-format on

namespace orb {

// Calls act(strand) for every open incoming connection. Thread-safety: any thread. REQUIRES: the
// calling thread owns the ORB's transport lock.
template <typename Act>
void forEachStrand(Act act) {
  for (omni::StrandList* link = omni::giopStrand::passive.next; link != &omni::giopStrand::passive;
       link = link->next) {
    act(*static_cast<omni::giopStrand*>(link));
  }
}

}  // namespace orb

#endif
