// The size limit of GIOP messages, which this ORB does not have of its own.

#ifndef ORB_TAO_MESSAGES_H
#define ORB_TAO_MESSAGES_H

#include <cstddef>
#include <cstdint>

namespace orb {

// The minor code of MARSHAL for a message that is over the limit of the process that would send it.
// The value is omniORB's (MARSHAL_MessageSizeExceedLimitOnServer), so that its clients understand.
constexpr std::uint32_t kMessageTooLarge = 0x4154000c;

// Of every message in both directions, header included; for messages from here on.
void limitMessages(std::size_t bytes);

// Makes the limit a part of the ORB's configuration of this process. Before the first ORB starts.
void installMessageLimit();

}  // namespace orb

#endif
