// What only the ORB's own headers can tell about a POA.

#include "orb/orb.h"

// Builds on the ORB's public headers without including them.
#include <omniORB4/internal/poaimpl.h>

namespace orb {

bool isOrbsOwnPoa(PortableServer::POA_ptr poa) {
  return dynamic_cast<omni::omniOrbPOA*>(poa) != nullptr;
}

// The ORB answers so as soon as the POA's objects are gone.
bool isCleanupInProgress(PortableServer::POA_ptr poa) {
  return poa->_non_existent();
}

bool isPoaGoing(const CORBA::SystemException& failure) {
  return CORBA::OBJECT_NOT_EXIST::_downcast(&failure) != nullptr;
}

}  // namespace orb
