// Records as rows of values: one description a record type serves every output format.

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

// An NVSList_T in its two roles, which people want to see differently. Both borrow the list.
struct ObjectName {
  const globaldefs::NVSList_T* pairs;
};
struct Information {
  const globaldefs::NVSList_T* pairs;
};

// What nothing is known of but that it is there.
struct Unknown {};

// Borrows from the record. Enumerations are numbers or the names of their values.
using Value = std::variant<Unknown, bool, std::int64_t, std::uint64_t, std::string_view, ObjectName,
                           Information>;

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
struct Field {
  const char* name;  // as in the IDL
  Value (*value)(const Record&);
};

// The fields of a record type in IDL order.
template <typename Record>
using Description = std::vector<Field<Record>>;

const Description<TopoManagementManager::Node_T>& nodeDescription();
const Description<topologicalLink::TopologicalLink_T>& linkDescription();
const Description<globaldefs::NameAndStringValue_T>& pairDescription();

}  // namespace topoctl

#endif
