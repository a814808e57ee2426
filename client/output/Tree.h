// Nodes as an indented tree, as docs/topoctl.md describes it.

#ifndef CLIENT_OUTPUT_TREE_H
#define CLIENT_OUTPUT_TREE_H

#include <iosfwd>

#include "client/agent/Batches.h"
#include "orb/idl/TopoManagementManager.h"

namespace topoctl {

// Time and text are linear in the number of nodes, for any parents. Exceptions of the stream pass.
// Thread-safety: any thread.
void printTree(const Batches<TopoManagementManager::NodeList_T>& nodes, std::ostream& out);

}  // namespace topoctl

#endif
