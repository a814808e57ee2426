// The objects that clients can name: their names, and what the agent knows them by.
//
// A name is two pairs: ("EMS", name of the managing system), then the object's class and value:
//   ("ManagedElement", number)  a network element             id NE=number
//   ("ONE", number)             an optical network element    id ONE=number
//   ("OS", number)              a management system           id OS=number
//   ("TopoSubnetwork", id)      a topology subnetwork         id id
//   ("ClockTopoLinkId", id)     a link of the clock topology  id id
// Numbers are decimal, from 0 to 2147483647, without sign and leading zeros; the ids of subnetworks
// are not empty. Names and keys map one to one.
//
// Stateless, any thread. Total: any name, however long or malformed, is answered.

#ifndef AGENT_NETWORK_MANAGEDOBJECTS_H
#define AGENT_NETWORK_MANAGEDOBJECTS_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "agent/network/Network.h"
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

// The types of objects, by which their labels are stored.
constexpr std::int32_t kManagedElementType = 1;
constexpr std::int32_t kOpticalElementType = 2;
constexpr std::int32_t kManagementSystemType = 3;
constexpr std::int32_t kTopoSubnetworkObjectType = 54;
constexpr std::int32_t kClockLinkObjectType = 201;

// Which object: the key of everything that is stored about it.
struct ObjectKey {
  std::int32_t type = 0;
  std::string id;
};

inline bool operator==(const ObjectKey& a, const ObjectKey& b) {
  return a.type == b.type && a.id == b.id;
}

// The key that a name means, whether or not there is such an object. For a malformed name nothing,
// and the problem says what is wrong with it.
std::optional<ObjectKey> parseObjectName(const globaldefs::NVSList_T& name, std::string_view ems,
                                         std::string& problem);

// A name as a message quotes the name, such as {EMS=E, OS=1}: printable and short.
std::string formatName(const globaldefs::NVSList_T& name);
std::string formatName(const ObjectKey& key, std::string_view ems);

// An object of one of the three classes with numbers.
struct NumberedObject {
  std::int32_t type = 0;
  std::int32_t number = 0;
};

inline bool operator==(const NumberedObject& a, const NumberedObject& b) {
  return a.type == b.type && a.number == b.number;
}

// Nothing for the key of a subnetwork or a link.
std::optional<NumberedObject> numberedObject(const ObjectKey& key);

// The other way round. REQUIRES: one of the three classes.
ObjectKey keyOf(const NumberedObject& object);

// The object that an element of the topology is shown as, from its node's id: by the class of the
// last term of an FDN, where every other class and a bare number are a managed element. Nothing for
// a node that cannot be shown.
std::optional<NumberedObject> objectOfElementNode(const std::string& nodeId);

// The managed element that a clock position is shown as.
std::optional<NumberedObject> objectOfClockReference(const std::string& reference);

}  // namespace agent

#endif
