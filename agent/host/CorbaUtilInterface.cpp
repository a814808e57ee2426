// Defines platform/agent/CorbaUtilInterface.h: the key function. ObjectNaming implements the
// interface.

#include "platform/agent/CorbaUtilInterface.h"

namespace NS_CORBA {

CorbaUtilInterface::~CorbaUtilInterface() = default;

}  // namespace NS_CORBA
