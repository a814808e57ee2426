#include "connector.h"

#include <sys/socket.h>
#include <tao/IIOP_Endpoint.h>
#include <tao/Transport_Descriptor_Interface.h>

#include "checkedcalls.h"

namespace orb {

TAO_Transport* CheckedConnector::make_connection(TAO::Profile_Transport_Resolver* resolver,
                                                 TAO_Transport_Descriptor_Interface& description,
                                                 ACE_Time_Value* timeout) {
  if (const auto* const endpoint = dynamic_cast<TAO_IIOP_Endpoint*>(description.endpoint())) {
    check(endpoint->object_addr());
  }
  return TAO_IIOP_Connector::make_connection(resolver, description, timeout);
}

void CheckedConnector::check(const ACE_INET_Addr& address) {
  char text[INET6_ADDRSTRLEN] = "";
  checkConnection(address.get_host_addr(text, sizeof text) == nullptr ? "" : text);
}

}  // namespace orb
