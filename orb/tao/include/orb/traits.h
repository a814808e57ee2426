// Differences between ORBs that orb.h does not hide.

#ifndef ORB_TRAITS_H
#define ORB_TRAITS_H

#include <ace/config-all.h>

namespace orb {

// Whether the size limit applies to the exact number of octets of a message. On this ORB:
// - A request that a server receives is measured exactly.
// - A received reply is measured by the size of its buffer, which grows by doubling up to 64 KiB
// and
//   by 64 KiB above.
// - A string or sequence of octets at the end of a sent message is measured alone, without the
//   message before it.
constexpr bool kExactMessageLimit = false;

// Whether a client receives an exception when the reply is over the size limit of the server. If
// not, the connection ends in the middle of the reply.
constexpr bool kRefusesLargeAnswers = true;

// Whether references can contain IPv6 addresses; decided by the build of the ORB.
#ifdef ACE_HAS_IPV6
constexpr bool kHasIpv6 = true;
#else
constexpr bool kHasIpv6 = false;
#endif

}  // namespace orb

#endif
