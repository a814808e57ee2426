// Where ORBs differ in a way that shows, beyond what orb.h hides.

#ifndef ORB_TRAITS_H
#define ORB_TRAITS_H

namespace orb {

// Whether the size limit of messages counts every octet. It does not: a message that arrives is
// measured by the buffer that it needs, which grows by doubling up to 64 KiB and by 64 KiB above
// that; of a message that leaves the text or octets at its very end are only measured by
// themselves.
constexpr bool kExactMessageLimit = false;

// Whether a client is told that the answer is over the size limit of the server. If not, the
// connection ends in the middle of it.
constexpr bool kRefusesLargeAnswers = true;

}  // namespace orb

#endif
