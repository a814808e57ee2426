// Calls that a host may refuse.

#ifndef CONFORMANCE_CHECKS_REFUSALS_H
#define CONFORMANCE_CHECKS_REFUSALS_H

#include <set>
#include <string>

#include "conformance/shared/Verdict.h"
#include "orb/idl/globaldefs.h"

namespace conformance {

// Whether the exception is the answer of a host that does not support a call, in contrast to a
// failure of the host or of the connection. Thread-safety: any thread.
inline bool isRefusal(const CORBA::SystemException& failure) {
  static const std::set<std::string> names = {"BAD_PARAM", "IMP_LIMIT", "NO_IMPLEMENT",
                                              "NO_PERMISSION", "NO_RESOURCES"};
  return names.count(failure._name()) != 0;
}

// Runs a call whose contract allows CORBA exceptions. Throws Skipped for a refusal; other system
// exceptions, and the exceptions of the IDL, pass. Thread-safety: that of the call.
template <typename Call>
void skipIfNotSupported(const std::string& name, Call call) {
  try {
    call();
  } catch (const CORBA::SystemException& failure) {
    if (!isRefusal(failure)) {
      throw;
    }
    throw Skipped(name + " raises " + failure._name() + ", as it may");
  }
}

// Runs a call that needs an iterator. Throws Skipped when the host refuses iterators, as the
// contract of getIteratorPoa and add_Iterator allows. Thread-safety: that of the call.
template <typename Call>
void skipWithoutIterators(Call call) {
  try {
    skipIfNotSupported("a call that needs an iterator", call);
  } catch (const globaldefs::ProcessingFailureException& refusal) {
    throw Skipped(std::string("the host refuses iterators: ") + refusal.errorReason.in());
  }
}

}  // namespace conformance

#endif
