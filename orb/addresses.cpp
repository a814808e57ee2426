#include "addresses.h"

#include <netdb.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <charconv>
#include <cstddef>
#include <string_view>
#include <system_error>
#include <utility>

namespace orb {
namespace {

const std::string kUnixScheme = "unix:";

using AddressQuery = int (*)(int, sockaddr*, socklen_t*);

Endpoint addressFrom(AddressQuery query, int socket) {
  sockaddr_storage address{};
  socklen_t size = sizeof address;
  auto* const general = reinterpret_cast<sockaddr*>(&address);
  char host[NI_MAXHOST] = "";
  char port[NI_MAXSERV] = "";
  const bool exists = query(socket, general, &size) == 0;
  if (exists && address.ss_family == AF_UNIX) {
    const auto* const path = reinterpret_cast<const sockaddr_un*>(&address)->sun_path;
    return {size > offsetof(sockaddr_un, sun_path) ? path : "", 0, Transport::kUnix};
  }
  const bool known = exists && (address.ss_family == AF_INET || address.ss_family == AF_INET6) &&
                     getnameinfo(general, size, host, sizeof host, port, sizeof port,
                                 NI_NUMERICHOST | NI_NUMERICSERV) == 0;
  return known ? Endpoint{host, static_cast<std::uint16_t>(std::stoul(port))} : Endpoint{};
}

std::optional<std::uint16_t> portFrom(std::string_view text) {
  std::uint16_t port = 0;
  const char* const end = text.data() + text.size();
  const std::from_chars_result result = std::from_chars(text.data(), end, port);
  return result.ec == std::errc() && result.ptr == end ? std::optional(port) : std::nullopt;
}

// HOST:PORT, or [HOST]:PORT for an IPv6 address.
std::optional<Endpoint> hostAndPort(const std::string& text, Transport transport) {
  const std::size_t colon = text.rfind(':');
  if (colon == std::string::npos) {
    return std::nullopt;
  }
  std::string host = text.substr(0, colon);
  const std::optional<std::uint16_t> port = portFrom(std::string_view(text).substr(colon + 1));
  const bool bracketed = host.size() > 2 && host.front() == '[' && host.back() == ']';
  if (bracketed) {
    host = host.substr(1, host.size() - 2);
  }
  if (!port || host.empty() ||
      host.find_first_of(bracketed ? "[] " : "[]: ") != std::string::npos) {
    return std::nullopt;
  }
  return Endpoint{host, *port, transport};
}

}  // namespace

std::string format(const Endpoint& endpoint) {
  if (endpoint.transport == Transport::kUnix) {
    return kUnixScheme + endpoint.host;
  }
  const bool ipv6 = endpoint.host.find(':') != std::string::npos;
  const std::string host = ipv6 ? "[" + endpoint.host + "]" : endpoint.host;
  return host + ":" + std::to_string(endpoint.port);
}

std::string format(const Peer& peer) {
  const std::string address = peer.transport == Transport::kUnix ? "a local socket" : peer.address;
  return peer.subject.empty() ? address : address + " (" + peer.subject + ")";
}

std::optional<Endpoint> endpointFrom(const std::string& text, Transport bare) {
  const auto starts = [&text](const std::string& scheme) {
    return text.compare(0, scheme.size(), scheme) == 0;
  };
  if (starts(kUnixScheme)) {
    std::string path = text.substr(kUnixScheme.size());
    const bool usable =
        path.size() > 1 && path.front() == '/' && path.find_first_of(",:#%") == std::string::npos;
    return usable ? std::optional(Endpoint{std::move(path), 0, Transport::kUnix}) : std::nullopt;
  }
  if (starts("tcp:") || starts("tls:")) {
    return hostAndPort(text.substr(4), starts("tls:") ? Transport::kTls : Transport::kTcp);
  }
  return hostAndPort(text, bare);
}

Endpoint parseEndpoint(const std::string& address) {
  const std::size_t colon = address.rfind(':');
  std::string host = address.substr(0, colon);
  if (host.size() > 2 && host.front() == '[') {
    host = host.substr(1, host.size() - 2);
  }
  return {host, static_cast<std::uint16_t>(std::stoul(address.substr(colon + 1)))};
}

Peer peerOf(int socket, Transport transport, std::size_t endpoint) {
  Peer peer;
  peer.transport = transport;
  peer.address = transport == Transport::kUnix ? "" : peerEndpoint(socket).host;
  peer.endpoint = endpoint;
  return peer;
}

Endpoint localEndpoint(int socket) {
  return addressFrom(::getsockname, socket);
}

Endpoint peerEndpoint(int socket) {
  return addressFrom(::getpeername, socket);
}

}  // namespace orb
