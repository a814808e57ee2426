// Defines ThrowException of platform/agent/Failures.h; the host defines ConstructException.

#include "platform/agent/Failures.h"

namespace NS_CORBA {

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
