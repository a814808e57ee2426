// The key functions that the agent defines outside its domain folder.

#include "platform/bundlemgr/ServiceInterface.h"
#include "platform/framework/ProcessException.h"

ProcessException::~ProcessException() = default;

namespace NS_BUNDLEMGR1 {

ServiceInterface::~ServiceInterface() = default;

}  // namespace NS_BUNDLEMGR1
