#include "destinations.h"

#include <omniORB4/omniIOR.h>

#include "../addresses.h"

namespace orb {

Destination destinationIn(const std::string& address) {
  const auto after = [&address](const std::string& prefix) {
    return address.compare(0, prefix.size(), prefix) == 0 ? address.substr(prefix.size()) : "";
  };
  for (const char* const prefix : {"giop:tcp:", "giop:ssl:"}) {
    const std::string endpoint = after(prefix);
    if (!endpoint.empty()) {
      return {Destination::Kind::kIp, parseEndpoint(endpoint).host};
    }
  }
  const bool isUnix = !after("giop:unix:").empty();
  return {isUnix ? Destination::Kind::kUnix : Destination::Kind::kOther, address};
}

std::vector<Destination> destinationsIn(const omniIOR& ior) {
  std::vector<Destination> result;
  for (const omni::giopAddress* const address : ior.getIORInfo()->addresses()) {
    result.push_back(destinationIn(address->address()));
  }
  return result;
}

std::vector<Destination> destinationsOf(CORBA::Object_ptr reference) {
  omniIOR* const ior = reference->_PR_getobj()->_getIOR();
  std::vector<Destination> result = destinationsIn(*ior);
  ior->release();
  return result;
}

}  // namespace orb
