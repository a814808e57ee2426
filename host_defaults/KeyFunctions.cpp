// The key functions of the contracts: the destructors of the types that cross between host and
// module. The compiler emits the virtual table and the type information of a type beside its
// destructor.

#include "platform/agent/AgentConfig.h"
#include "platform/agent/CorbaUtilInterface.h"
#include "platform/bundlemgr/ServiceInterface.h"
#include "platform/domain/DomainInterface.h"
#include "platform/event/EventMgr.h"
#include "platform/framework/ProcessException.h"
#include "platform/security/SecurityIF.h"

ProcessException::~ProcessException() = default;
InterfaceNotExistException::~InterfaceNotExistException() = default;

TEEventHandler::~TEEventHandler() = default;
TEEventMgr::~TEEventMgr() = default;

namespace NS_BUNDLEMGR1 {
ServiceInterface::~ServiceInterface() = default;
NULLServiceInterface::~NULLServiceInterface() = default;
}  // namespace NS_BUNDLEMGR1

namespace NS_CORBA {
CorbaUtilInterface::~CorbaUtilInterface() = default;
MgrFactory::~MgrFactory() = default;
}  // namespace NS_CORBA

namespace NS_DOMAIN {
TopoData::~TopoData() = default;
NEData::~NEData() = default;
DomainFacet::~DomainFacet() = default;
DomainInterface::~DomainInterface() = default;
}  // namespace NS_DOMAIN

namespace NS_SECURITY_SERVICE1 {
SecurityIF::~SecurityIF() = default;
}  // namespace NS_SECURITY_SERVICE1
