// Defines platform/domain/DomainInterface.h: the key functions. DomainService implements the
// interfaces.

#include "platform/domain/DomainInterface.h"

namespace NS_DOMAIN {

TopoData::~TopoData() = default;
NEData::~NEData() = default;
DomainFacet::~DomainFacet() = default;
DomainInterface::~DomainInterface() = default;

}  // namespace NS_DOMAIN
