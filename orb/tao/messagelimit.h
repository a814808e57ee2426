// A size limit of GIOP messages, which this ORB does not have.

#ifndef ORB_TAO_MESSAGELIMIT_H
#define ORB_TAO_MESSAGELIMIT_H

#include <cstddef>
#include <cstdint>

namespace orb {

// The minor code of MARSHAL for a message over the limit of the sending process. The value is
// omniORB's MARSHAL_MessageSizeExceedLimitOnServer, so that omniORB's clients can interpret it.
constexpr std::uint32_t kMessageTooLarge = 0x4154000c;

// Sets the size limit of later messages in both directions, header included. Thread-safety: any
// thread.
void limitMessages(std::size_t bytes);

// Adds the limit to the ORB configuration of the process. REQUIRES: no ORB was started.
void installMessageLimit();

}  // namespace orb

#endif
