// State of a POA that only the ORB's internal headers reveal.

#include "orb/orb.h"

// Needs the ORB's public headers, but does not include them.
#include <omniORB4/internal/poaimpl.h>

namespace orb {

bool isOrbsOwnPoa(PortableServer::POA_ptr poa) {
  return dynamic_cast<omni::omniOrbPOA*>(poa) != nullptr;
}

// _non_existent() of the POA changes only after the last request has ended. find_POA() of the
// parent fails as soon as the destruction begins.
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
