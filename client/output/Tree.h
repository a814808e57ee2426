// Nodes as a tree for people; docs/topoctl.md describes it.

#ifndef CLIENT_OUTPUT_TREE_H
#define CLIENT_OUTPUT_TREE_H

#include <iosfwd>

#include "client/agent/Batches.h"
#include "orb/idl/TopoManagementManager.h"

namespace topoctl {

// Takes time and writes text linear in the nodes, whatever their parents are.
void printTree(const Batches<TopoManagementManager::NodeList_T>& nodes, std::ostream& out);

}  // namespace topoctl

#endif
