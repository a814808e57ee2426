#include "addresses.h"

#include <netdb.h>
#include <sys/socket.h>

namespace orb {
namespace {

using AddressQuery = int (*)(int, sockaddr*, socklen_t*);

Endpoint endpointFrom(AddressQuery query, int socket) {
  sockaddr_storage address{};
  socklen_t size = sizeof address;
  auto* const general = reinterpret_cast<sockaddr*>(&address);
  char host[NI_MAXHOST] = "";
  char port[NI_MAXSERV] = "";
  const bool known = query(socket, general, &size) == 0 &&
                     (address.ss_family == AF_INET || address.ss_family == AF_INET6) &&
                     getnameinfo(general, size, host, sizeof host, port, sizeof port,
                                 NI_NUMERICHOST | NI_NUMERICSERV) == 0;
  return known ? Endpoint{host, static_cast<std::uint16_t>(std::stoul(port))} : Endpoint{};
}

}  // namespace

std::string format(const Endpoint& endpoint) {
  const bool ipv6 = endpoint.host.find(':') != std::string::npos;
  const std::string host = ipv6 ? "[" + endpoint.host + "]" : endpoint.host;
  return host + ":" + std::to_string(endpoint.port);
}

std::string format(const Peer& peer) {
  const std::string address =
      peer.transport == Peer::Transport::kUnix ? "a local socket" : peer.address;
  return peer.subject.empty() ? address : address + " (" + peer.subject + ")";
}

Endpoint parseEndpoint(const std::string& address) {
  const std::size_t colon = address.rfind(':');
  std::string host = address.substr(0, colon);
  if (host.size() > 2 && host.front() == '[') {
    host = host.substr(1, host.size() - 2);
  }
  return {host, static_cast<std::uint16_t>(std::stoul(address.substr(colon + 1)))};
}

Peer peerOf(int socket) {
  sockaddr_storage address{};
  socklen_t size = sizeof address;
  Peer peer;
  peer.transport = ::getsockname(socket, reinterpret_cast<sockaddr*>(&address), &size) == 0 &&
                           address.ss_family == AF_UNIX
                       ? Peer::Transport::kUnix
                       : Peer::Transport::kTcp;
  peer.address = peerEndpoint(socket).host;
  return peer;
}

Endpoint localEndpoint(int socket) {
  return endpointFrom(::getsockname, socket);
}

Endpoint peerEndpoint(int socket) {
  return endpointFrom(::getpeername, socket);
}

CORBA::Object_ptr objectBeside(CORBA::ORB_ptr orb, CORBA::Object_ptr reference,
                               const std::string& key) {
  const std::string address = addressOf(reference);
  if (address.empty()) {
    throw CORBA::BAD_PARAM(0, CORBA::COMPLETED_NO);
  }
  return orb->string_to_object(("corbaloc:iiop:1.2@" + address + "/" + key).c_str());
}

}  // namespace orb
