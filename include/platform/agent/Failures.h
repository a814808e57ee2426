// Translates failure codes into globaldefs::ProcessingFailureException, the user exception of the
// CORBA interface.
//
// A code is an unsigned 32-bit number, 0 for success. The host defines the exception type and the
// reason of each code, and a default for codes that the host does not know.
//
// Thread-safety: any thread. Ownership: all arguments are borrowed for the call.

#ifndef PLATFORM_AGENT_FAILURES_H
#define PLATFORM_AGENT_FAILURES_H

#include <string>

#include "orb/idl/globaldefs.h"
#include "platform/framework/Export.h"

namespace NS_CORBA {

// The module's only failure code: a conversion between domain and TMF records failed, or an
// iterator could not be created.
constexpr CORBA::ULong ERR_TOPO_CONVERSION = 0x411800BA;  // 1092092090

// Fills the exception type and the reason for a code. REQUIRES: code is not 0.
PLATFORM_API void ConstructException(CORBA::ULong code,
                                     globaldefs::ProcessingFailureException& exception);

// Returns for code 0, and throws the ProcessingFailureException of any other code. A text that is
// not empty replaces the reason.
PLATFORM_API void ThrowException(CORBA::ULong code);
PLATFORM_API void ThrowException(CORBA::ULong code, const std::string& text);

}  // namespace NS_CORBA

#endif
