// An object of the agent at a well-known key of the endpoint.

#ifndef AGENT_NORTHBOUND_SERVEDOBJECT_H
#define AGENT_NORTHBOUND_SERVEDOBJECT_H

#include <memory>
#include <utility>

#include "orb/orb.h"

namespace agent {

// Serves a servant from the construction to the destruction.
//
// Thread-safety: constructed and destroyed by one thread, never within a request.
// Ownership: owns the creation reference of the servant; borrows the server, which outlives this
// object.
// Errors: the constructor throws a CORBA exception when the servant cannot be served.
class ServedObject {
 public:
  // The guard admits every request before its arguments are decoded; an empty guard admits all.
  ServedObject(orb::Server& server, const char* key, PortableServer::ServantBase* servant,
               orb::RequestGuard guard = nullptr)
      : object_(server.wellKnownObject(key)), servant_(servant) {
    const CORBA::Object_var reference = object_->publish(servant, std::move(guard));
  }

  // Waits for running requests.
  ~ServedObject() { object_->retire(); }

  ServedObject(const ServedObject&) = delete;
  ServedObject& operator=(const ServedObject&) = delete;

 private:
  const std::unique_ptr<orb::WellKnownObject> object_;
  const PortableServer::ServantBase_var servant_;
};

}  // namespace agent

#endif
