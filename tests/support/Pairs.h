// Names of objects, and other lists of pairs, for tests.

#ifndef TESTS_SUPPORT_PAIRS_H
#define TESTS_SUPPORT_PAIRS_H

#include <string>
#include <utility>
#include <vector>

#include "orb/idl/globaldefs.h"

using Pairs = std::vector<std::pair<std::string, std::string>>;

inline globaldefs::NVSList_T nameOf(const Pairs& pairs) {
  globaldefs::NVSList_T name;
  name.length(static_cast<CORBA::ULong>(pairs.size()));
  for (CORBA::ULong i = 0; i < name.length(); ++i) {
    name[i].name = CORBA::string_dup(pairs[i].first.c_str());
    name[i].value = CORBA::string_dup(pairs[i].second.c_str());
  }
  return name;
}

inline Pairs pairsOf(const globaldefs::NVSList_T& name) {
  Pairs pairs;
  for (CORBA::ULong i = 0; i < name.length(); ++i) {
    pairs.emplace_back(name[i].name.in(), name[i].value.in());
  }
  return pairs;
}

#endif
