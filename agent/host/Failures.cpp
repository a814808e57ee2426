// Defines ConstructException of platform/agent/Failures.h: the exception types and reasons of the
// failure codes. host_defaults/ defines ThrowException, which calls ConstructException.

#include "platform/agent/Failures.h"

#include "agent/base/FailureCodes.h"
#include "agent/host/FailureReason.h"
#include "platform/framework/ProcessException.h"

namespace {

struct Meaning {
  CORBA::ULong code;
  globaldefs::ExceptionType_T type;
  const char* reason;
};

constexpr Meaning kMeanings[] = {
    {agent::kNotImplemented, globaldefs::EXCPT_NOT_IMPLEMENTED, "not implemented"},
    {agent::kInvalidName, globaldefs::EXCPT_INVALID_INPUT, "malformed object name"},
    {agent::kInvalidInput, globaldefs::EXCPT_INVALID_INPUT, "invalid input"},
    {agent::kEntityNotFound, globaldefs::EXCPT_ENTITY_NOT_FOUND, "no such object"},
    {agent::kAlreadyExists, globaldefs::EXCPT_OBJECT_IN_USE, "the object exists already"},
    {agent::kTooMuch, globaldefs::EXCPT_CAPACITY_EXCEEDED, "a limit of number or size is reached"},
    {agent::kUserLabelInUse, globaldefs::EXCPT_USERLABEL_IN_USE, "user label in use"},
    {agent::kTooManyIterators, globaldefs::EXCPT_TOO_MANY_OPEN_ITERATORS,
     "too many open iterators"},
    {agent::kInternalError, globaldefs::EXCPT_INTERNAL_ERROR, "internal error"},
    {NS_CORBA::ERR_TOPO_CONVERSION, globaldefs::EXCPT_INTERNAL_ERROR,
     "the result could not be converted or iterated"},
    {static_cast<CORBA::ULong>(InterfaceNotExistException::kInterfaceNotExist),
     globaldefs::EXCPT_INTERNAL_ERROR, "a platform service is missing"},
};

Meaning meaningOf(CORBA::ULong code) {
  for (const Meaning& meaning : kMeanings) {
    if (meaning.code == code) {
      return meaning;
    }
  }
  return {code, globaldefs::EXCPT_INTERNAL_ERROR, "platform failure"};
}

}  // namespace

namespace NS_CORBA {

void ConstructException(CORBA::ULong code, globaldefs::ProcessingFailureException& exception) {
  const Meaning meaning = meaningOf(code);
  std::string reason = agent::takeReason(code);
  if (reason.empty()) {
    reason = std::string(meaning.reason) + " (code " + std::to_string(code) + ")";
  }
  exception.exceptionType = meaning.type;
  exception.errorReason = CORBA::string_dup(reason.c_str());
}

}  // namespace NS_CORBA
