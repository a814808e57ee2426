#include "listening.h"

#include <sys/socket.h>

#include <algorithm>
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

std::string joined(const std::vector<Endpoint>& endpoints) {
  std::string text;
  for (const Endpoint& endpoint : endpoints) {
    text += (text.empty() ? "" : ", ") + format(endpoint);
  }
  return text;
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

void ListeningCheck::requireOnly(const std::vector<Endpoint>& endpoints) const {
  std::vector<Endpoint> expected = endpoints;
  for (const auto& [descriptor, address] : sockets()) {
    if (before_.count(descriptor) != 0) {
      continue;
    }
    const auto found =
        std::find_if(expected.begin(), expected.end(), [&at = address](const Endpoint& endpoint) {
          return endpoint.transport == Transport::kUnix ? at.host == endpoint.host
                                                        : at.port == endpoint.port;
        });
    if (found == expected.end()) {
      throw EndpointError("the ORB listens on " + addressForMessage(address) + " besides " +
                          joined(endpoints));
    }
    expected.erase(found);
  }
}

}  // namespace orb
