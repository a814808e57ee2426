// Building TMF records, the same on every ORB.
//
// Strings and lists put into a record are owned by it. Lists are only sized with setLength, so that
// an element nobody has written yet is always a fresh record.

#ifndef TOPO_TMFRECORDS_H
#define TOPO_TMFRECORDS_H

#include <memory>
#include <new>
#include <string>
#include <type_traits>

#include "orb/idl/TopoManagementManager.h"
#include "orb/idl/globaldefs.h"
#include "orb/idl/notifications.h"
#include "orb/idl/topologicalLink.h"

namespace topo {

// The mapping leaves numbers of a new record undefined; fresh records have zeros.
inline void clearNumbers(globaldefs::NameAndStringValue_T&) {}
inline void clearNumbers(notifications::NameAndAnyValue_T&) {}

inline void clearNumbers(TopoManagementManager::Node_T& node) {
  node.nodeType = 0;
  node.nodeParam1 = 0;
  node.nodeParam2 = 0;
}

inline void clearNumbers(topologicalLink::TopologicalLink_T& link) {
  link.direction = globaldefs::CD_UNI;
  link.rate = 0;
}

// A copy for the caller. Throws bad_alloc when memory is short; some ORBs return null then.
inline char* duplicate(const char* text) {
  char* const copy = CORBA::string_dup(text);
  if (copy == nullptr) {
    throw std::bad_alloc();
  }
  return copy;
}

// A record with empty texts, empty lists and zeros.
template <typename Record>
Record freshRecord() {
  Record record;
  clearNumbers(record);
  return record;
}

// The element at an index; CORBA::BAD_PARAM when the list is not that long.
template <typename List>
auto& at(List& list, CORBA::ULong index) {
  if (index >= list.length()) {
    throw CORBA::BAD_PARAM(0, CORBA::COMPLETED_NO);
  }
  return list[index];
}

// Moves a list into a longer buffer of its own. An ORB's own growth may take more room than is
// asked for, and may lose the new buffer when a record cannot be copied into it.
template <typename List>
void enlarge(List& list, CORBA::ULong length) {
  using Record = std::remove_reference_t<decltype(list[0])>;
  struct Free {
    void operator()(Record* buffer) const { List::freebuf(buffer); }
  };
  std::unique_ptr<Record[], Free> buffer(List::allocbuf(length));
  const CORBA::ULong old = list.length();
  for (CORBA::ULong i = 0; i < old; ++i) {
    buffer[i] = list[i];
  }
  for (CORBA::ULong i = old; i < length; ++i) {
    clearNumbers(buffer[i]);
  }
  list.replace(length, length, buffer.release(), true);
}

// Sizes a list: elements that stay are kept, elements that come are fresh, and elements that are
// cut off do not come back when the list grows again. Some ORBs keep the contents of cut-off
// elements in the buffer, hence the resetting. Records that the list only borrows are left alone.
// When memory is short the list stays as it was.
template <typename List>
void setLength(List& list, CORBA::ULong length) {
  using Record = std::remove_reference_t<decltype(list[0])>;
  if (length > list.maximum()) {
    enlarge(list, length);
    return;
  }
  const CORBA::ULong old = list.length();
  const bool owned = list.release();
  for (CORBA::ULong i = length; owned && i < old; ++i) {
    list[i] = freshRecord<Record>();
  }
  list.length(length);
  for (CORBA::ULong i = old; owned && i < length; ++i) {
    list[i] = freshRecord<Record>();
  }
}

// Writes the pair at an index; CORBA::BAD_PARAM when the list is not that long.
inline void setPair(globaldefs::NVSList_T& list, CORBA::ULong index, const char* name,
                    const std::string& value) {
  globaldefs::NameAndStringValue_T& pair = at(list, index);
  pair.name = duplicate(name);
  pair.value = duplicate(value.c_str());
}

}  // namespace topo

#endif
