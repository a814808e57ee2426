// Encoded size of values.

#include "orb/orb.h"

#include <omniORB4/omniORB.h>

namespace orb {

// A counting stream has no default code sets, so they are taken from a memory stream.
std::size_t encodedBytes(const CORBA::Any& value) {
  const cdrMemoryStream codeSets;
  cdrCountingStream stream(codeSets.TCS_C(), codeSets.TCS_W());
  value >>= stream;
  return stream.total();
}

}  // namespace orb
