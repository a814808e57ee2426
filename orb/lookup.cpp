// Addresses of hosts.

#include <netdb.h>
#include <sys/socket.h>

#include <memory>

#include "orb/destinations.h"

namespace orb {

std::vector<std::string> numericAddresses(const std::string& host) {
  constexpr std::size_t kLongestName = 255;  // of the domain name system
  if (host.size() > kLongestName) {
    return {};
  }
  addrinfo hints{};
  hints.ai_socktype = SOCK_STREAM;
  addrinfo* found = nullptr;
  if (::getaddrinfo(host.c_str(), nullptr, &hints, &found) != 0) {
    return {};
  }
  const std::unique_ptr<addrinfo, void (*)(addrinfo*)> list(found, ::freeaddrinfo);
  std::vector<std::string> result;
  for (const addrinfo* each = list.get(); each != nullptr; each = each->ai_next) {
    char text[NI_MAXHOST] = "";
    if (::getnameinfo(each->ai_addr, each->ai_addrlen, text, sizeof text, nullptr, 0,
                      NI_NUMERICHOST) == 0) {
      result.emplace_back(text);
    }
  }
  return result;
}

}  // namespace orb
