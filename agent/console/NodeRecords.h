// Parts of node records, from the types of the IDL to the types of the domain. Part of the console.

#ifndef AGENT_CONSOLE_NODERECORDS_H
#define AGENT_CONSOLE_NODERECORDS_H

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "agent/changes/NodeService.h"
#include "orb/idl/TopoAgent.h"

namespace agent {

// NodeService refuses kTypeOfParent as the type of a node.
inline std::uint32_t typeOf(TopoAgent::NodeKind_T kind) {
  switch (kind) {
    case TopoAgent::NK_ELEMENT:
      return NS_DOMAIN::kTopoElement;
    case TopoAgent::NK_SUBNETWORK:
      return NS_DOMAIN::kTopoSubnetwork;
    default:
      return NodeService::kTypeOfParent;
  }
}

inline std::vector<std::pair<std::string, std::string>> domainPairs(
    const globaldefs::NVSList_T& list) {
  std::vector<std::pair<std::string, std::string>> pairs;
  for (CORBA::ULong i = 0; i < list.length(); ++i) {
    pairs.emplace_back(list[i].name.in(), list[i].value.in());
  }
  return pairs;
}

}  // namespace agent

#endif
