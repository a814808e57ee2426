#include "tests/fuzz/EncodedEvent.h"

#include <tao/CDR.h>

namespace fuzz {

std::optional<CosNotification::StructuredEvent> decodeEvent(const std::uint8_t* data,
                                                            std::size_t size) {
  constexpr int kLittleEndian = 1;
  TAO_InputCDR stream(reinterpret_cast<const char*>(data), size, kLittleEndian);
  try {
    CosNotification::StructuredEvent event;
    if (stream >> event) {
      return event;
    }
  } catch (const CORBA::SystemException&) {
    // As a stream in the state of an error.
  }
  return std::nullopt;
}

}  // namespace fuzz
