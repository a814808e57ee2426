// platform/agent/Failures.h: what a client receives for a failure code.
#include "platform/agent/Failures.h"
#include "Host.h"

using globaldefs::ExceptionType_T, globaldefs::ProcessingFailureException;

void NS_CORBA::ConstructException(CORBA::ULong code, ProcessingFailureException& exception) {
  const bool own = code >= host::kFailure && code < host::kFailure + 16;
  exception.exceptionType =
      own ? ExceptionType_T(code - host::kFailure) : globaldefs::EXCPT_INTERNAL_ERROR;
  exception.errorReason = CORBA::string_dup(("failure " + std::to_string(code)).c_str());
}
