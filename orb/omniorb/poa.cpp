// What only the ORB's own headers can tell about a POA.

#include "orb/orb.h"

// Builds on the ORB's public headers without including them.
#include <omniORB4/internal/poaimpl.h>

namespace orb {

bool isOrbsOwnPoa(PortableServer::POA_ptr poa) {
  return dynamic_cast<omni::omniOrbPOA*>(poa) != nullptr;
}

// The POA's own answer, _non_existent, changes only when the last request on the POA has ended. Its
// parent no longer finds the POA as soon as the destruction begins.
bool isCleanupInProgress(PortableServer::POA_ptr poa) {
  try {
    const PortableServer::POA_var parent = poa->the_parent();
    if (CORBA::is_nil(parent)) {  // the root POA
      return poa->_non_existent();
    }
    const CORBA::String_var name = poa->the_name();
    const PortableServer::POA_var found = parent->find_POA(name.in(), false);
    return found.in() != poa;
  } catch (const CORBA::OBJECT_NOT_EXIST&) {
    return true;
  } catch (const PortableServer::POA::AdapterNonExistent&) {
    return true;
  }
}

}  // namespace orb
