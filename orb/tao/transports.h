// Transports besides plain IIOP.

#ifndef ORB_TAO_TRANSPORTS_H
#define ORB_TAO_TRANSPORTS_H

#include <tao/Protocol_Factory.h>
#include <tao/Transport_Connector.h>

#include <cstdint>
#include <memory>

class TAO_Endpoint;

namespace orb {

// Returns a replacement of the ORB's factory for Unix sockets (UIOP).
std::unique_ptr<TAO_Protocol_Factory> makeUnixProtocol();

// Adds TLS of outgoing calls to the ORB that is initialised next, and to all later ones. No effect
// without TLS. REQUIRES: no ORB is running. Thread-safety: any thread.
void installTls();

// Returns a connector for IIOP with and without TLS, or null if installTls() had no effect or was
// not called.
std::unique_ptr<TAO_Connector> makeTlsConnector();

// Returns the port of an endpoint of TLS; 0 for another endpoint. Thread-safety: any thread.
std::uint16_t tlsPortOf(TAO_Endpoint& endpoint);

}  // namespace orb

#endif
