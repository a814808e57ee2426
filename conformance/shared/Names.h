// Building and printing the names of managed objects.

#ifndef CONFORMANCE_SHARED_NAMES_H
#define CONFORMANCE_SHARED_NAMES_H

#include <string>

#include "orb/idl/globaldefs.h"

namespace conformance {

// Pure functions; thread-safety: any thread. Errors: std::bad_alloc.

// "NAME=VALUE NAME=VALUE": for comparisons and messages.
inline std::string toText(const globaldefs::NVSList_T& pairs) {
  std::string text;
  for (CORBA::ULong i = 0; i < pairs.length(); ++i) {
    text += (i == 0 ? "" : " ") + std::string(pairs[i].name.in()) + '=' + pairs[i].value.in();
  }
  return text;
}

inline void append(globaldefs::NVSList_T& pairs, const std::string& name,
                   const std::string& value) {
  const CORBA::ULong last = pairs.length();
  pairs.length(last + 1);
  pairs[last].name = CORBA::string_dup(name.c_str());
  pairs[last].value = CORBA::string_dup(value.c_str());
}

// The name of an object from the value of "EMS", a class and a value.
inline globaldefs::NVSList_T objectName(const std::string& ems, const std::string& objectClass,
                                        const std::string& value) {
  globaldefs::NVSList_T name;
  append(name, "EMS", ems);
  append(name, objectClass, value);
  return name;
}

}  // namespace conformance

#endif
