// Outgoing connections over TCP.

#ifndef ORB_TAO_CONNECTOR_H
#define ORB_TAO_CONNECTOR_H

#include <ace/INET_Addr.h>
#include <tao/IIOP_Connector.h>

namespace orb {

// Checks the numeric address of each new connection. Thread-safety, ownership and errors: as
// TAO_Connector; exceptions of the check pass.
class CheckedConnector : public TAO_IIOP_Connector {
 protected:
  // Called after the ORB has looked up the host of the endpoint; connects to the found address.
  TAO_Transport* make_connection(TAO::Profile_Transport_Resolver* resolver,
                                 TAO_Transport_Descriptor_Interface& description,
                                 ACE_Time_Value* timeout) override;

  static void check(const ACE_INET_Addr& address);
};

}  // namespace orb

#endif
