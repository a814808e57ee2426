// Defines platform/agent/Failures.h. A host with failure codes of its own defines
// ConstructException.

#include "platform/agent/Failures.h"

#include "platform/framework/ProcessException.h"

namespace NS_CORBA {
namespace {

const char* reasonOf(CORBA::ULong code) {
  switch (code) {
    case ERR_TOPO_CONVERSION:
      return "the result could not be converted or iterated";
    case static_cast<CORBA::ULong>(InterfaceNotExistException::kInterfaceNotExist):
      return "a platform service is missing";
    default:
      return "platform failure";
  }
}

}  // namespace

void ConstructException(CORBA::ULong code, globaldefs::ProcessingFailureException& exception) {
  const std::string reason = std::string(reasonOf(code)) + " (code " + std::to_string(code) + ")";
  exception.exceptionType = globaldefs::EXCPT_INTERNAL_ERROR;
  exception.errorReason = CORBA::string_dup(reason.c_str());
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
