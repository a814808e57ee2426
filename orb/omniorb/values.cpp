// The size of values.

#include "orb/orb.h"

#include <omniORB4/omniORB.h>

namespace orb {

// The counting stream takes its code sets from a memory stream, because it has no default ones.
std::size_t encodedBytes(const CORBA::Any& value) {
  const cdrMemoryStream codeSets;
  cdrCountingStream stream(codeSets.TCS_C(), codeSets.TCS_W());
  value >>= stream;
  return stream.total();
}

}  // namespace orb
