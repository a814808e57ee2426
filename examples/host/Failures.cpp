// platform/agent/Failures.h: what a client receives for each failure code.

#include "platform/agent/Failures.h"
#include "Host.h"

namespace {

globaldefs::ExceptionType_T typeOf(CORBA::ULong code) {
  switch (code) {
    case host::kNotSupported:
      return globaldefs::EXCPT_NOT_IMPLEMENTED;
    case host::kInvalidName:
      return globaldefs::EXCPT_INVALID_INPUT;
    case host::kNoSuchObject:
      return globaldefs::EXCPT_ENTITY_NOT_FOUND;
    case host::kTooManyIterators:
      return globaldefs::EXCPT_TOO_MANY_OPEN_ITERATORS;
    default:
      return globaldefs::EXCPT_INTERNAL_ERROR;
  }
}

}  // namespace

namespace NS_CORBA {

void ConstructException(CORBA::ULong code, globaldefs::ProcessingFailureException& exception) {
  exception.exceptionType = typeOf(code);
  exception.errorReason = CORBA::string_dup(("failure " + std::to_string(code)).c_str());
}

void ThrowException(CORBA::ULong code) {
  ThrowException(code, "");
}

void ThrowException(CORBA::ULong code, const std::string& text) {
  if (code == 0) {
    return;
  }
  globaldefs::ProcessingFailureException failure;
  ConstructException(code, failure);
  if (!text.empty()) {
    failure.errorReason = CORBA::string_dup(text.c_str());
  }
  throw failure;
}

}  // namespace NS_CORBA
