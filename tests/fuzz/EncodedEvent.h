// Structured events in the encoding of messages.

#ifndef TESTS_FUZZ_ENCODEDEVENT_H
#define TESTS_FUZZ_ENCODEDEVENT_H

#include <cstddef>
#include <cstdint>
#include <optional>

#include "orb/notification.h"

namespace fuzz {

// The event that the ORB decodes from little-endian bytes; empty when the ORB rejects the bytes.
// Thread-safety: any thread. REQUIRES: an ORB is running.
std::optional<CosNotification::StructuredEvent> decodeEvent(const std::uint8_t* data,
                                                            std::size_t size);

}  // namespace fuzz

#endif
