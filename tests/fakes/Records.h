// TMF records as plain structs, for expectations of tests.

#ifndef TESTS_FAKES_RECORDS_H
#define TESTS_FAKES_RECORDS_H

#include <ostream>
#include <string>
#include <vector>

#include "orb/idl/TopoManagementManager.h"
#include "orb/idl/topologicalLink.h"

namespace fakes {

// Every field of a node. Lists of pairs are texts as printed() makes them, such as "[EMS=EMS-1]".
struct NodeFields {
  std::string name;
  std::string nativeEMSName{};
  CORBA::ULong nodeType = 0;
  CORBA::Long nodeParam1 = 0;
  CORBA::Long nodeParam2 = 0;
  std::string relatedName = "[]";
  std::string additionalInfo = "[]";
};

NodeFields fieldsOf(const TopoManagementManager::Node_T& node);
bool operator==(const NodeFields& left, const NodeFields& right);
void PrintTo(const NodeFields& node, std::ostream* out);

// The native names of the nodes of a list, in its order.
std::vector<std::string> labelsOf(const TopoManagementManager::NodeList_T& nodes);

// Every field of a link.
struct LinkFields {
  std::string name;
  std::string userLabel;
  std::string nativeEMSName{};
  std::string aEndTP = "[]";
  std::string zEndTP = "[]";
  std::string additionalInfo = "[TOPO_LINK_TYPE=]";
  std::string owner{};
  globaldefs::ConnectionDirection_T direction = globaldefs::CD_UNI;
  CORBA::Short rate = 0;
};

LinkFields fieldsOf(const topologicalLink::TopologicalLink_T& link);
bool operator==(const LinkFields& left, const LinkFields& right);
void PrintTo(const LinkFields& link, std::ostream* out);

}  // namespace fakes

#endif
