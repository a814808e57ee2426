// What only the ORB's own headers can tell about a POA.

#include <tao/ORB_Constants.h>
#include <tao/PortableServer/Root_POA.h>
#include <tao/SystemException.h>

#include "orb/orb.h"

namespace orb {

bool isOrbsOwnPoa(PortableServer::POA_ptr poa) {
  return dynamic_cast<TAO_Root_POA*>(poa) != nullptr;
}

bool isCleanupInProgress(PortableServer::POA_ptr poa) {
  return dynamic_cast<TAO_Root_POA&>(*poa).cleanup_in_progress();
}

bool isPoaGoing(const CORBA::SystemException& failure) {
  return CORBA::OBJECT_NOT_EXIST::_downcast(&failure) != nullptr ||
         (CORBA::BAD_INV_ORDER::_downcast(&failure) != nullptr &&
          (failure.minor() & TAO_POA_BEING_DESTROYED) == TAO_POA_BEING_DESTROYED);
}

}  // namespace orb
