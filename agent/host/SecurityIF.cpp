// Defines platform/security/SecurityIF.h: the key function. SecurityService implements the
// interface.

#include "platform/security/SecurityIF.h"

namespace NS_SECURITY_SERVICE1 {

SecurityIF::~SecurityIF() = default;

}  // namespace NS_SECURITY_SERVICE1
