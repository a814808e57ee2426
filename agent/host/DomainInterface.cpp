// The key functions of the contracts that the agent's domain implements: type information of these
// interfaces is emitted here, once in the process.

#include "platform/domain/DomainInterface.h"
#include "platform/agent/CorbaUtilInterface.h"

namespace NS_DOMAIN {

TopoData::~TopoData() = default;
NEData::~NEData() = default;
DomainFacet::~DomainFacet() = default;
DomainInterface::~DomainInterface() = default;

}  // namespace NS_DOMAIN

namespace NS_CORBA {

CorbaUtilInterface::~CorbaUtilInterface() = default;

}  // namespace NS_CORBA
