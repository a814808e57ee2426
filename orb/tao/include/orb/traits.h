// Where ORBs differ in a way that shows, beyond what orb.h hides.

#ifndef ORB_TRAITS_H
#define ORB_TRAITS_H

namespace orb {

// Whether the size limit counts every octet of every message. Requests that a server receives are
// counted exactly. A reply that arrives is measured by the buffer that it needs, which grows by
// doubling up to 64 KiB and by 64 KiB above that. A text or octets at the very end of a message
// that leaves are measured alone, without the message before them.
constexpr bool kExactMessageLimit = false;

// Whether a client is told that the answer is over the size limit of the server. If not, the
// connection ends in the middle of it.
constexpr bool kRefusesLargeAnswers = true;

}  // namespace orb

#endif
