// What only the ORB's own headers can tell about a POA.

#include <tao/PortableServer/Root_POA.h>

#include "orb/orb.h"

namespace orb {

void destroyPoa(PortableServer::POA_ptr poa) {
  const PortableServer::POAManager_var manager = poa->the_POAManager();
  manager->discard_requests(true);
  poa->destroy(true, true);
}

bool isOrbsOwnPoa(PortableServer::POA_ptr poa) {
  return dynamic_cast<TAO_Root_POA*>(poa) != nullptr;
}

bool isCleanupInProgress(PortableServer::POA_ptr poa) {
  return dynamic_cast<TAO_Root_POA&>(*poa).cleanup_in_progress();
}

}  // namespace orb
