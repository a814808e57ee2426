// The objects that clients can name, and the keys of these objects in the agent.
//
// A name consists of two pairs: ("EMS", name of the managing system), then the class and the value
// of the object:
//   ("ManagedElement", number)  a network element             id NE=number
//   ("ONE", number)             an optical network element    id ONE=number
//   ("OS", number)              a management system           id OS=number
//   ("TopoSubnetwork", id)      a topology subnetwork         id id
//   ("ClockTopoLinkId", id)     a link of the clock topology  id id
// Numbers are decimal, from 0 to 2147483647, without sign and leading zeros. The id of a subnetwork
// is not empty. Names and keys map one to one.
//
// Pure functions; thread-safety: any thread. Names of any length and form are valid arguments.

#ifndef AGENT_NETWORK_MANAGEDOBJECTS_H
#define AGENT_NETWORK_MANAGEDOBJECTS_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "agent/network/Network.h"
#include "hash/SaltedHash.h"
#include "orb/idl/globaldefs.h"

namespace agent {

// The classes of names.
namespace tmf {
constexpr const char* kEms = "EMS";
constexpr const char* kManagedElement = "ManagedElement";
constexpr const char* kOpticalElement = "ONE";
constexpr const char* kManagementSystem = "OS";
constexpr const char* kTopoSubnetwork = "TopoSubnetwork";
constexpr const char* kClockLink = "ClockTopoLinkId";
}  // namespace tmf

// The types of objects in keys.
constexpr std::int32_t kManagedElementType = 1;
constexpr std::int32_t kOpticalElementType = 2;
constexpr std::int32_t kManagementSystemType = 3;
constexpr std::int32_t kTopoSubnetworkObjectType = 54;
constexpr std::int32_t kClockLinkObjectType = 201;

// Identifies an object in the store and in the model.
struct ObjectKey {
  std::int32_t type = 0;
  std::string id;
};

inline bool operator==(const ObjectKey& a, const ObjectKey& b) {
  return a.type == b.type && a.id == b.id;
}

// Parses a name. The object need not exist. For a malformed name the result is empty and problem is
// the reason.
std::optional<ObjectKey> parseObjectName(const globaldefs::NVSList_T& name, std::string_view ems,
                                         std::string& problem);

// A printable and short form of a name for messages, such as {EMS=E, OS=1}.
std::string formatName(const globaldefs::NVSList_T& name);
std::string formatName(const ObjectKey& key, std::string_view ems);

// The class and the value in the name of an object.
std::string_view classOf(const ObjectKey& key);
std::string_view valueOf(const ObjectKey& key);

// The printable class and value of an object, such as ManagedElement=7.
std::string formatObject(const ObjectKey& key);

// An object of one of the classes ManagedElement, ONE and OS.
struct NumberedObject {
  std::int32_t type = 0;
  std::int32_t number = 0;
};

inline bool operator==(const NumberedObject& a, const NumberedObject& b) {
  return a.type == b.type && a.number == b.number;
}

struct NumberedObjectHash {
  std::size_t operator()(const NumberedObject& object) const {
    return salted::Hash()(std::int64_t{object.number} * 4 + object.type);
  }
};

// Empty for the key of a subnetwork or a link.
std::optional<NumberedObject> numberedObject(const ObjectKey& key);

// The inverse of numberedObject(). REQUIRES: a type of the three classes.
ObjectKey keyOf(const NumberedObject& object);

// The object under whose name clients see a node of the type element. The class of the last term of
// the node's FDN decides; an unknown class or a bare number means a managed element. Empty for a
// node that views leave out.
std::optional<NumberedObject> objectOfElementNode(const std::string& nodeId);

// Whether the id of an element node has a number: a bare id that is a decimal number as a whole, or
// an FDN whose last class has a number. The number may be negative.
bool hasElementNumber(const std::string& nodeId);

// The managed element under whose name clients see a clock position. Empty for a position that
// views leave out.
std::optional<NumberedObject> objectOfClockReference(const std::string& reference);

}  // namespace agent

#endif
