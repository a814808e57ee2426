// Functions on POAs that need the ORB's internal headers.

#include <tao/PortableServer/Root_POA.h>

#include <memory>

#include "incoming.h"
#include "orb/orb.h"

namespace orb {
namespace {

// Returns the common prefix of the keys of the POA's objects.
ObjectKey keyPrefix(PortableServer::POA_ptr poa) {
  const CORBA::OctetSeq_var id = poa->id();
  return {reinterpret_cast<const char*>(id->get_buffer()), id->length()};
}

}  // namespace

bool isOrbsOwnPoa(PortableServer::POA_ptr poa) {
  return dynamic_cast<TAO_Root_POA*>(poa) != nullptr;
}

bool isCleanupInProgress(PortableServer::POA_ptr poa) {
  return dynamic_cast<TAO_Root_POA&>(*poa).cleanup_in_progress();
}

void destroyPoa(PortableServer::POA_ptr poa) {
  if (isCleanupInProgress(poa)) {
    throw CORBA::OBJECT_NOT_EXIST(0, CORBA::COMPLETED_NO);
  }
  const PortableServer::POAManager_var manager = poa->the_POAManager();
  manager->discard_requests(false);
  if (const std::shared_ptr<Connections> connections = currentConnections()) {
    const ObjectKey prefix = keyPrefix(poa);
    connections->drain(
        [&prefix](const ObjectKey& key) { return key.compare(0, prefix.size(), prefix) == 0; });
  }
  poa->destroy(true, true);
}

}  // namespace orb
