// Differences between ORBs that orb.h does not hide.

#ifndef ORB_TRAITS_H
#define ORB_TRAITS_H

namespace orb {

// Whether the size limit applies to the exact number of octets of a message.
constexpr bool kExactMessageLimit = true;

// Whether a client receives an exception when the reply is over the size limit of the server. If
// not, the connection ends in the middle of the reply.
constexpr bool kRefusesLargeAnswers = false;

// Whether references can contain IPv6 addresses.
constexpr bool kHasIpv6 = true;

}  // namespace orb

#endif
