// Addresses of sockets and of references.

#ifndef ORB_ADDRESSES_H
#define ORB_ADDRESSES_H

#include <string>

#include "orb/orb.h"

namespace orb {

// The inverse of format(). REQUIRES: "HOST:PORT" with a valid port, an IPv6 address in brackets.
Endpoint parseEndpoint(const std::string& address);

// The numeric address of a TCP socket, the path of a Unix socket; port 0 for other sockets and for
// a closed connection.
Endpoint localEndpoint(int socket);
Endpoint peerEndpoint(int socket);

// The client of a connection that the endpoint accepted.
Peer peerOf(int socket, Transport transport, std::size_t endpoint);

}  // namespace orb

#endif
