// Replaces functions of the C library: the process connects only to the port of allowOnlyPort() and
// looks no host name up, also for the addresses in fuzzed messages. The code of the module stays
// mapped.

#include "tests/fuzz/LoopbackOnly.h"

#include <arpa/inet.h>
#include <dlfcn.h>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <atomic>
#include <cerrno>
#include <cstring>

namespace {

std::atomic<std::uint16_t> allowedPort{0};

bool isAllowed(const sockaddr* address, socklen_t length) {
  if (address->sa_family != AF_INET || length < sizeof(sockaddr_in)) {
    return address->sa_family == AF_UNIX;
  }
  sockaddr_in internet{};
  std::memcpy(&internet, address, sizeof internet);
  return internet.sin_addr.s_addr == htonl(INADDR_LOOPBACK) &&
         ntohs(internet.sin_port) == allowedPort;
}

template <typename Function>
Function* original(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

namespace fuzz {

void allowOnlyPort(std::uint16_t port) {
  allowedPort = port;
}

}  // namespace fuzz

extern "C" {

int connect(int socket, const sockaddr* address, socklen_t length) {
  if (!isAllowed(address, length)) {
    errno = ECONNREFUSED;
    return -1;
  }
  static auto* const connectSocket = original<decltype(connect)>("connect");
  return connectSocket(socket, address, length);
}

int getaddrinfo(const char* host, const char* service, const addrinfo* hints, addrinfo** result) {
  addrinfo numeric{};
  if (hints != nullptr) {
    numeric = *hints;
  }
  numeric.ai_flags |= AI_NUMERICHOST;
  static auto* const resolve = original<decltype(getaddrinfo)>("getaddrinfo");
  return resolve(host, service, &numeric, result);
}

// libFuzzer reads the counters of all code until the end of the process.
int dlclose(void*) {
  return 0;
}
}
