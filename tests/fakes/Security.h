// The security interface of the fakes.

#ifndef TESTS_FAKES_SECURITY_H
#define TESTS_FAKES_SECURITY_H

#include "platform/security/SecurityIF.h"

namespace fakes {

// What isEventAccessAllowed answers, true at first.
void allowEventAccess(bool allowed);

NS_SECURITY_SERVICE1::SecurityIF& security();

}  // namespace fakes

#endif
