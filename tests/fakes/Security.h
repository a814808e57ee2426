// The fake SecurityIF.

#ifndef TESTS_FAKES_SECURITY_H
#define TESTS_FAKES_SECURITY_H

#include "platform/security/SecurityIF.h"

namespace fakes {

// Sets the answer of isEventAccessAllowed; true initially.
void allowEventAccess(bool allowed);

NS_SECURITY_SERVICE1::SecurityIF& security();

}  // namespace fakes

#endif
