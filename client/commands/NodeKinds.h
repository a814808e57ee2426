// Kinds of nodes in requests to the console.

#ifndef CLIENT_COMMANDS_NODEKINDS_H
#define CLIENT_COMMANDS_NODEKINDS_H

#include "client/commandline/Arguments.h"
#include "orb/idl/TopoAgent.h"

namespace topoctl {

inline TopoAgent::NodeKind_T toNodeKind(NodeKind kind) {
  switch (kind) {
    case NodeKind::kElement:
      return TopoAgent::NK_ELEMENT;
    case NodeKind::kSubnetwork:
      return TopoAgent::NK_SUBNETWORK;
    case NodeKind::kOfParent:
      return TopoAgent::NK_OF_PARENT;
  }
  return TopoAgent::NK_OF_PARENT;
}

}  // namespace topoctl

#endif
