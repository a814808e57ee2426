// Encoded size of values.

#include "orb/orb.h"

#include <tao/AnyTypeCode/Any.h>
#include <tao/CDR.h>

namespace orb {

std::size_t encodedBytes(const CORBA::Any& value) {
  TAO_OutputCDR stream;
  if (!(stream << value)) {
    throw CORBA::MARSHAL(0, CORBA::COMPLETED_NO);
  }
  return stream.total_length();
}

}  // namespace orb
