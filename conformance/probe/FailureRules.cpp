#include <string>
#include <vector>

#include "conformance/probe/Calls.h"
#include "conformance/probe/Rules.h"
#include "platform/agent/Failures.h"

namespace conformance::probe {
namespace {

using globaldefs::ProcessingFailureException;
using NS_CORBA::ThrowException;

// The codes of the module, and codes that the host does not know.
const std::vector<CORBA::ULong> kCodes = {
    NS_CORBA::ERR_TOPO_CONVERSION,
    static_cast<CORBA::ULong>(InterfaceNotExistException::kInterfaceNotExist), 0x7ffffffe,
    0xffffffff};

// The exception that the call raises. Throws Broken unless it is a ProcessingFailureException.
template <typename Call>
ProcessingFailureException failureOf(const std::string& name, Call call) {
  try {
    call();
  } catch (const ProcessingFailureException& failure) {
    return failure;
  } catch (...) {
    throw Broken(name + " raises " + describeCurrentException() +
                 ", not a ProcessingFailureException");
  }
  throw Broken(name + " raises no exception");
}

std::string nameOf(CORBA::ULong code) {
  return "ThrowException(" + std::to_string(code) + ")";
}

ProcessingFailureException constructed(CORBA::ULong code, globaldefs::ExceptionType_T before) {
  ProcessingFailureException failure;
  failure.exceptionType = before;
  quietly("ConstructException", [&] { NS_CORBA::ConstructException(code, failure); });
  return failure;
}

}  // namespace

void successRaisesNothing() {
  strictly("ThrowException(0)", [] { ThrowException(0); });
  strictly("ThrowException(0, text)", [] { ThrowException(0, "a text"); });
}

void codesOfTheModuleAreInternalErrors() {
  for (const CORBA::ULong code : {kCodes[0], kCodes[1]}) {
    const auto failure = failureOf(nameOf(code), [code] { ThrowException(code); });
    require(failure.exceptionType == globaldefs::EXCPT_INTERNAL_ERROR,
            nameOf(code) + " has another type than EXCPT_INTERNAL_ERROR");
  }
}

void failuresHaveTheUserException() {
  for (const CORBA::ULong code : kCodes) {
    failureOf(nameOf(code), [code] { ThrowException(code); });
    failureOf(nameOf(code), [code] { ThrowException(code, ""); });
  }
}

void textsReplaceTheReason() {
  const std::string text = "the reason of topo-conformance";
  for (const CORBA::ULong code : kCodes) {
    const auto failure = failureOf(nameOf(code), [&] { ThrowException(code, text); });
    require(failure.errorReason.in() == text,
            nameOf(code) + " has the reason \"" + failure.errorReason.in() + '"');
  }
}

// A type that ConstructException does not set keeps its earlier value.
void constructedFailuresHaveAReason() {
  for (const CORBA::ULong code : kCodes) {
    const std::string name = "ConstructException(" + std::to_string(code) + ")";
    const auto failure = constructed(code, globaldefs::EXCPT_NE_COMM_LOSS);
    require(
        failure.exceptionType == constructed(code, globaldefs::EXCPT_INTERNAL_ERROR).exceptionType,
        name + " sets no type");
    require(failure.errorReason.in() != nullptr && failure.errorReason.in()[0] != '\0',
            name + " sets no reason");
    const auto thrown = failureOf(nameOf(code), [code] { ThrowException(code); });
    require(thrown.exceptionType == failure.exceptionType,
            nameOf(code) + " has another type than ConstructException");
  }
}

}  // namespace conformance::probe
