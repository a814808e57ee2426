// Where ORBs differ in a way that shows, beyond what orb.h hides.

#ifndef ORB_TRAITS_H
#define ORB_TRAITS_H

namespace orb {

// Whether the size limit of messages counts every octet.
constexpr bool kExactMessageLimit = true;

// Whether a client is told that the answer is over the size limit of the server. If not, the
// connection ends in the middle of it.
constexpr bool kRefusesLargeAnswers = false;

}  // namespace orb

#endif
