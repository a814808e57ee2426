// The name that is sent for an object.

#ifndef CLIENT_COMMANDS_OBJECTNAMES_H
#define CLIENT_COMMANDS_OBJECTNAMES_H

#include <vector>

#include "client/commandline/Arguments.h"
#include "client/commands/CommandContext.h"
#include "orb/idl/globaldefs.h"

namespace topoctl {

globaldefs::NVSList_T toList(const std::vector<TypedPair>& pairs);

// The whole name of the object in the context's options. Unless it was given whole, a call is made
// for the EMS that it starts with: that of the first node the agent shows. Throws Failure
// (kCallFailed) when there is none; exceptions of the call pass.
globaldefs::NVSList_T objectName(const ManagerContext& context);

}  // namespace topoctl

#endif
