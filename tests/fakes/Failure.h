// The user exception of an operation as a plain struct, for expectations of tests.

#ifndef TESTS_FAKES_FAILURE_H
#define TESTS_FAKES_FAILURE_H

#include <functional>
#include <optional>
#include <ostream>
#include <string>

#include "orb/idl/globaldefs.h"

namespace fakes {

struct Failure {
  globaldefs::ExceptionType_T type;
  std::string reason;
};

inline bool operator==(const Failure& left, const Failure& right) {
  return left.type == right.type && left.reason == right.reason;
}

inline void PrintTo(const Failure& failure, std::ostream* out) {
  *out << "exception type " << failure.type << " \"" << failure.reason << '"';
}

// Runs an operation and returns its ProcessingFailureException; nothing when the operation returns.
// Other exceptions pass.
inline std::optional<Failure> failureOf(const std::function<void()>& operation) {
  try {
    operation();
    return std::nullopt;
  } catch (const globaldefs::ProcessingFailureException& failure) {
    return Failure{failure.exceptionType, failure.errorReason.in()};
  }
}

// The exceptions that the fakes make of a failure code in ThrowException and ConstructException.
inline Failure thrownFor(CORBA::ULong code) {
  return {globaldefs::EXCPT_UNABLE_TO_COMPLY, "thrown for " + std::to_string(code)};
}

inline Failure constructedFrom(CORBA::ULong code) {
  return {globaldefs::EXCPT_INTERNAL_ERROR, "constructed from " + std::to_string(code)};
}

}  // namespace fakes

#endif
