#include "listening.h"

#include <netdb.h>
#include <sys/socket.h>

#include <filesystem>
#include <system_error>

namespace orb {
namespace {

bool isListening(int descriptor) {
  int listening = 0;
  socklen_t size = sizeof listening;
  return getsockopt(descriptor, SOL_SOCKET, SO_ACCEPTCONN, &listening, &size) == 0 &&
         listening != 0;
}

// A socket that is not of TCP has port 0.
Endpoint addressOfSocket(int descriptor) {
  sockaddr_storage address{};
  socklen_t size = sizeof address;
  auto* const general = reinterpret_cast<sockaddr*>(&address);
  char host[NI_MAXHOST] = "";
  char port[NI_MAXSERV] = "";
  const bool known = getsockname(descriptor, general, &size) == 0 &&
                     (address.ss_family == AF_INET || address.ss_family == AF_INET6) &&
                     getnameinfo(general, size, host, sizeof host, port, sizeof port,
                                 NI_NUMERICHOST | NI_NUMERICSERV) == 0;
  return known ? Endpoint{host, static_cast<std::uint16_t>(std::stoul(port))}
               : Endpoint{"a local socket", 0};
}

}  // namespace

ListeningCheck::ListeningCheck() : before_(sockets()) {}

ListeningCheck::Sockets ListeningCheck::sockets() {
  Sockets found;
  std::error_code status;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd", status)) {
    const int descriptor = std::stoi(entry.path().filename());
    if (isListening(descriptor)) {
      found.emplace(descriptor, addressOfSocket(descriptor));
    }
  }
  return found;
}

void ListeningCheck::requireOnly(const Endpoint& endpoint) const {
  const Sockets now = sockets();
  std::size_t expected = 0;
  for (const auto& [descriptor, address] : now) {
    if (before_.count(descriptor) != 0) {
      continue;
    }
    const bool isFirst = address.port == endpoint.port && ++expected == 1;
    if (!isFirst) {
      throw EndpointError("the ORB listens on " + format(address) + " besides " + format(endpoint));
    }
  }
}

}  // namespace orb
