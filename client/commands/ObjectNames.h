// The names of objects in requests.

#ifndef CLIENT_COMMANDS_OBJECTNAMES_H
#define CLIENT_COMMANDS_OBJECTNAMES_H

#include <vector>

#include "client/commandline/Arguments.h"
#include "client/commands/CommandContext.h"
#include "orb/idl/globaldefs.h"

namespace topoctl {

globaldefs::NVSList_T toList(const std::vector<TypedPair>& pairs);

// Returns the whole name of the object in the context's options. A name that was typed without the
// EMS gets the EMS of the first node of the topology subnetwork view, at the cost of a call. Throws
// Failure (kCallFailed) when the view has no node or the node no EMS; exceptions of the call pass.
// Thread-safety: any thread.
globaldefs::NVSList_T objectName(const ManagerContext& context);

}  // namespace topoctl

#endif
