// The fields of the records that an agent delivers: name and value, for every output format.

#ifndef CLIENT_AGENT_RECORDFIELDS_H
#define CLIENT_AGENT_RECORDFIELDS_H

#include <cstdint>
#include <string_view>
#include <variant>
#include <vector>

#include "orb/idl/TopoManagementManager.h"
#include "orb/idl/globaldefs.h"
#include "orb/idl/topologicalLink.h"

namespace topoctl {

// The two roles of an NVSList_T: tables show the last pair of a name, but all pairs of information.
// Both borrow the list.
struct NamePairs {
  const globaldefs::NVSList_T* pairs;
};
struct InfoPairs {
  const globaldefs::NVSList_T* pairs;
};

// A value that is present but has an unsupported type.
struct Unknown {};

// Borrows from the record. An enumeration is a number or the name of the enumerator.
using Value = std::variant<Unknown, bool, std::int64_t, std::uint64_t, std::string_view, NamePairs,
                           InfoPairs>;

// Combines functions, one for each alternative of a variant.
template <typename... Functions>
struct Overloaded : Functions... {
  using Functions::operator()...;
};
template <typename... Functions>
Overloaded(Functions...) -> Overloaded<Functions...>;

// visit(name, value), both as std::string_view.
template <typename Visit>
void forEachPair(const globaldefs::NVSList_T& pairs, Visit visit) {
  for (CORBA::ULong i = 0; i < pairs.length(); ++i) {
    visit(std::string_view(pairs[i].name.in()), std::string_view(pairs[i].value.in()));
  }
}

template <typename Record>
struct FieldAccess {
  const char* name;  // as in the IDL
  Value (*value)(const Record&);
};

// The fields of a record type, in the order of the IDL.
template <typename Record>
using RecordFields = std::vector<FieldAccess<Record>>;

const RecordFields<TopoManagementManager::Node_T>& nodeFields();
const RecordFields<topologicalLink::TopologicalLink_T>& linkFields();
const RecordFields<globaldefs::NameAndStringValue_T>& pairFields();

}  // namespace topoctl

#endif
