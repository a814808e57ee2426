// The command that sets an attribute of an object.

#ifndef CLIENT_COMMANDS_SETATTRIBUTE_H
#define CLIENT_COMMANDS_SETATTRIBUTE_H

#include "client/commands/CommandContext.h"

namespace topoctl {

// Sets the attribute and the object of the context's options. Throws what objectName throws;
// exceptions of the call pass.
PrintFunction setAttribute(const ManagerContext& context);

}  // namespace topoctl

#endif
