// The key functions of the contracts of event handling: type information of these interfaces is
// emitted here, once in the process.

#include "platform/event/EventMgr.h"
#include "platform/security/SecurityIF.h"

TEEventHandler::~TEEventHandler() = default;
TEEventMgr::~TEEventMgr() = default;

namespace NS_SECURITY_SERVICE1 {

SecurityIF::~SecurityIF() = default;

}  // namespace NS_SECURITY_SERVICE1
