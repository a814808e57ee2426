// Replaces tls.cpp when TAO was built without TLS.

#include "orb/orb.h"
#include "transports.h"

namespace orb {

bool hasTls() {
  return false;
}

void installTls() {}

std::unique_ptr<TAO_Connector> makeTlsConnector() {
  return nullptr;
}

std::uint16_t tlsPortOf(TAO_Endpoint& /*endpoint*/) {
  return 0;
}

}  // namespace orb
