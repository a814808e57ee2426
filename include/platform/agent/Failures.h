// Translates failure codes into globaldefs::ProcessingFailureException, the user exception of the
// CORBA interface.
//
// A code is an unsigned 32-bit number, 0 for success. The host defines the exception type and the
// reason of each code, and a default for codes that the host does not know. These codes reach the
// functions:
//
//   code         origin                                                     exception type
//   0x411800BA   ERR_TOPO_CONVERSION, see below                             EXCPT_INTERNAL_ERROR
//   0x41180004   InterfaceNotExistException::kInterfaceNotExist: no         EXCPT_INTERNAL_ERROR
//                "DomainInterface" is published
//   any other    a code of the host: ProcessException::errorCode of a       as the host means it
//                domain query (a negative code as its unsigned equivalent),
//                the result of TECommonFunc or of add_Iterator
//
// One refusal has no code: the module itself raises EXCPT_INVALID_INPUT with the reason
// "please input topoSubnetwork!".
//
// Thread-safety: any thread. Ownership: all arguments are borrowed for the call. Texts are UTF-8.
//
// Errors: the functions are called during a request. They must not raise anything but the
// exceptions that are said at each function and CORBA system exceptions: any other exception,
// std::bad_alloc included, ends the process. A client triggers the calls with every setter and with
// every view that fails.

#ifndef PLATFORM_AGENT_FAILURES_H
#define PLATFORM_AGENT_FAILURES_H

#include <string>

#include "orb/idl/globaldefs.h"
#include "platform/framework/Export.h"

namespace NS_CORBA {

// The only failure code that the module makes. A client gets its exception when
//   - an iterator cannot be created: getIteratorPoa returns nil, memory is short, or the POA is
//     being destroyed or not one of the ORB's own (TAIteratorHelper.h),
//   - a clock query raises an exception other than ProcessException (DomainInterface.h).
// The module's conversions of nodes and names also return the code, which then leaves a node out of
// a view and does not reach a client.
constexpr CORBA::ULong ERR_TOPO_CONVERSION = 0x411800BA;  // 1092092090

// Fills the exception type and the reason for a code. REQUIRES: code is not 0. The module raises
// the exception. Must not raise anything but CORBA system exceptions: ends the process.
PLATFORM_API void ConstructException(CORBA::ULong code,
                                     globaldefs::ProcessingFailureException& exception);

// Returns for code 0, and throws the ProcessingFailureException of any other code. A text that is
// not empty replaces the reason. The text may be set with code 0 too.
// Must raise for every code but 0. Must not raise anything else, except CORBA system exceptions:
// ends the process.
PLATFORM_API void ThrowException(CORBA::ULong code);
PLATFORM_API void ThrowException(CORBA::ULong code, const std::string& text);

}  // namespace NS_CORBA

#endif
