// TLS of outgoing calls.

#ifndef ORB_OMNIORB_OUTGOINGTLS_H
#define ORB_OMNIORB_OUTGOINGTLS_H

namespace orb {

// Sets the ORB's TLS context for the ORB that is initialised next, which owns the context.
void installTls();

}  // namespace orb

#endif
