// Builds TMF records, with the same result on every ORB.
//
// REQUIRES: code of the module sizes lists with setLength only, so each new element is a fresh
// record: empty texts, empty lists, zeros.
//
// Thread-safety: none; callers share no record between threads. Ownership: a record owns its texts
// and lists. Errors: CORBA::BAD_PARAM for an index outside a list, std::bad_alloc when memory is
// short.

#ifndef TOPO_TMFRECORDS_H
#define TOPO_TMFRECORDS_H

#include <memory>
#include <new>
#include <string>
#include <type_traits>
#include <utility>

#include "orb/idl/TopoManagementManager.h"
#include "orb/idl/globaldefs.h"
#include "orb/idl/notifications.h"
#include "orb/idl/topologicalLink.h"

namespace topo {

// Sets the numbers of a record to 0; the C++ mapping leaves the numbers of a new record undefined.
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

// Returns a copy, which the caller owns. Never null; some ORBs return null when memory is short.
inline char* duplicate(const char* text) {
  char* const copy = CORBA::string_dup(text);
  if (copy == nullptr) {
    throw std::bad_alloc();
  }
  return copy;
}

// Returns a record with empty texts, empty lists and zeros.
template <typename Record>
Record freshRecord() {
  Record record;
  clearNumbers(record);
  return record;
}

// Returns the element at an index.
template <typename List>
auto& at(List& list, CORBA::ULong index) {
  if (index >= list.length()) {
    throw CORBA::BAD_PARAM(0, CORBA::COMPLETED_NO);
  }
  return list[index];
}

// Copies a list into a new, longer buffer. The numbers of the new elements are undefined. Not left
// to the ORB, because some ORBs allocate more than `length` records, or leak the new buffer when
// the copy of a record fails.
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
  list.replace(length, length, buffer.release(), true);
}

// Sizes a list. Existing elements are kept and new elements are fresh. Some ORBs keep the contents
// of removed elements in the buffer, so setLength resets elements when the list shrinks and when it
// grows. A borrowed buffer is not written. When memory is short, the list does not change.
//
// kUndefined saves a pass over a large list: the caller sets the numbers of each new element that
// remains, and removes the others with setLength.
enum class NewNumbers { kZero, kUndefined };
template <typename List>
void setLength(List& list, CORBA::ULong length, NewNumbers numbers = NewNumbers::kZero) {
  using Record = std::remove_reference_t<decltype(list[0])>;
  const CORBA::ULong old = list.length();
  if (length > list.maximum()) {
    enlarge(list, length);
    for (CORBA::ULong i = old; numbers == NewNumbers::kZero && i < length; ++i) {
      clearNumbers(list[i]);
    }
    return;
  }
  const bool owned = list.release();
  for (CORBA::ULong i = length; owned && i < old; ++i) {
    list[i] = freshRecord<Record>();
  }
#ifndef __clang_analyzer__  // It assumes that a list with elements may have no buffer.
  list.length(length);
#endif
  for (CORBA::ULong i = old; owned && i < length; ++i) {
    list[i] = freshRecord<Record>();
  }
}

// Moves the elements of a list into an empty list. Neither allocates nor throws.
template <typename List>
void moveElements(List& from, List& to) {
  const CORBA::ULong length = from.length();
  if (length != 0) {
    const CORBA::ULong maximum = from.maximum();
    const bool owned = from.release();
    to.replace(maximum, length, from.get_buffer(owned), owned);
  }
}

// Moves the texts, lists and numbers of a record into a fresh record. Neither allocates nor throws.
inline void moveRecord(TopoManagementManager::Node_T& from, TopoManagementManager::Node_T& to) {
  moveElements(from.name, to.name);
  std::swap(from.nativeEMSName.inout(), to.nativeEMSName.inout());
  to.nodeType = from.nodeType;
  to.nodeParam1 = from.nodeParam1;
  to.nodeParam2 = from.nodeParam2;
  moveElements(from.relatedName, to.relatedName);
  moveElements(from.additionalInfo, to.additionalInfo);
}

inline void moveRecord(topologicalLink::TopologicalLink_T& from,
                       topologicalLink::TopologicalLink_T& to) {
  moveElements(from.name, to.name);
  std::swap(from.userLabel.inout(), to.userLabel.inout());
  std::swap(from.nativeEMSName.inout(), to.nativeEMSName.inout());
  std::swap(from.owner.inout(), to.owner.inout());
  to.direction = from.direction;
  to.rate = from.rate;
  moveElements(from.aEndTP, to.aEndTP);
  moveElements(from.zEndTP, to.zEndTP);
  moveElements(from.additionalInfo, to.additionalInfo);
}

// Writes the pair at an index.
inline void setPair(globaldefs::NVSList_T& list, CORBA::ULong index, const char* name,
                    const std::string& value) {
  globaldefs::NameAndStringValue_T& pair = at(list, index);
  pair.name = duplicate(name);
  pair.value = duplicate(value.c_str());
}

}  // namespace topo

#endif
