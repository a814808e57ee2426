#include "listening.h"

#include <sys/socket.h>

#include <filesystem>
#include <system_error>

#include "addresses.h"

namespace orb {
namespace {

bool isListening(int descriptor) {
  int listening = 0;
  socklen_t size = sizeof listening;
  return getsockopt(descriptor, SOL_SOCKET, SO_ACCEPTCONN, &listening, &size) == 0 &&
         listening != 0;
}

std::string addressForMessage(const Endpoint& address) {
  return address.host.empty() ? "a local socket" : format(address);
}

}  // namespace

ListeningCheck::ListeningCheck() : before_(sockets()) {}

ListeningCheck::Sockets ListeningCheck::sockets() {
  Sockets found;
  std::error_code status;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd", status)) {
    const int descriptor = std::stoi(entry.path().filename());
    if (isListening(descriptor)) {
      found.emplace(descriptor, localEndpoint(descriptor));
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
      throw EndpointError("the ORB listens on " + addressForMessage(address) + " besides " +
                          format(endpoint));
    }
  }
}

}  // namespace orb
