#include "orb/reachability.h"

#include <netdb.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <limits>
#include <memory>
#include <system_error>

#include "addresses.h"

namespace orb {
namespace {

constexpr std::chrono::milliseconds kDefaultTimeout{1000};

using Candidates = std::unique_ptr<addrinfo, void (*)(addrinfo*)>;

int pollTimeout(std::chrono::milliseconds timeout) {
  const auto limited = timeout.count() == 0 ? kDefaultTimeout : timeout;
  return static_cast<int>(
      std::min<std::chrono::milliseconds::rep>(limited.count(), std::numeric_limits<int>::max()));
}

// Waits until the connection attempt of the socket has ended. Returns an errno value, or 0.
int resultOfConnecting(int socket, std::chrono::milliseconds timeout) {
  pollfd waiting{socket, POLLOUT, 0};
  if (::poll(&waiting, 1, pollTimeout(timeout)) != 1) {
    return ETIMEDOUT;
  }
  int error = 0;
  socklen_t size = sizeof error;
  return ::getsockopt(socket, SOL_SOCKET, SO_ERROR, &error, &size) == 0 ? error : errno;
}

// Returns an errno value, or 0 after a successful connection.
int tryToConnect(const addrinfo& candidate, std::chrono::milliseconds timeout) {
  const int socket =
      ::socket(candidate.ai_family, candidate.ai_socktype | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  if (socket < 0) {
    return errno;
  }
  int error = ::connect(socket, candidate.ai_addr, candidate.ai_addrlen) == 0 ? 0 : errno;
  if (error == EINPROGRESS) {
    error = resultOfConnecting(socket, timeout);
  }
  ::close(socket);
  return error;
}

std::string whyNotConnectedTo(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  path.copy(address.sun_path, sizeof address.sun_path - 1);
  const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  const bool connected =
      ::connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
  const int error = connected ? 0 : errno;
  ::close(socket);
  return connected ? ""
                   : "no connection to the socket " + path + ": " +
                         std::generic_category().message(error);
}

}  // namespace

std::string whyNotConnected(const std::string& address, std::chrono::milliseconds timeout) {
  const std::string tlsFailure = takeTlsFailure();
  if (!tlsFailure.empty()) {
    return "TLS with " + address + " failed: " + tlsFailure;
  }
  if (const auto given = endpointFrom(address); given && given->transport == Transport::kUnix) {
    return whyNotConnectedTo(given->host);
  }
  const Endpoint endpoint = parseEndpoint(address);
  addrinfo hints{};
  hints.ai_socktype = SOCK_STREAM;
  addrinfo* found = nullptr;
  const int failure =
      ::getaddrinfo(endpoint.host.c_str(), std::to_string(endpoint.port).c_str(), &hints, &found);
  if (failure != 0) {
    return "the host '" + endpoint.host + "' is unknown: " + ::gai_strerror(failure);
  }
  const Candidates candidates(found, ::freeaddrinfo);
  int error = 0;
  for (const addrinfo* each = candidates.get(); each != nullptr; each = each->ai_next) {
    error = tryToConnect(*each, timeout);
    if (error == 0) {
      return "";
    }
  }
  return error == ECONNREFUSED
             ? "connection refused by " + address
             : "no connection to " + address + ": " + std::generic_category().message(error);
}

}  // namespace orb
