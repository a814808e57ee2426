#include "orb/orb.h"

namespace orb {

std::string format(const Endpoint& endpoint) {
  const bool ipv6 = endpoint.host.find(':') != std::string::npos;
  const std::string host = ipv6 ? "[" + endpoint.host + "]" : endpoint.host;
  return host + ":" + std::to_string(endpoint.port);
}

}  // namespace orb
