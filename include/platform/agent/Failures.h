// Translation of failure codes into the one user exception of the interface.
//
// Codes are unsigned 32-bit, 0 is success; the agent knows which exception type and reason a code
// stands for. Thread-safety: any thread.

#ifndef PLATFORM_AGENT_FAILURES_H
#define PLATFORM_AGENT_FAILURES_H

#include <string>

#include "orb/idl/globaldefs.h"
#include "platform/framework/Export.h"

namespace NS_CORBA {

// Fills exception type and reason for a code other than 0.
PLATFORM_API void ConstructException(CORBA::ULong code,
                                     globaldefs::ProcessingFailureException& exception);

// Returns quietly for code 0; throws a globaldefs::ProcessingFailureException for any other. The
// text, where given and not empty, is the reason.
PLATFORM_API void ThrowException(CORBA::ULong code);
PLATFORM_API void ThrowException(CORBA::ULong code, const std::string& text);

}  // namespace NS_CORBA

#endif
