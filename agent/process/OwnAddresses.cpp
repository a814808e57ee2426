#include "agent/process/OwnAddresses.h"

#include <ifaddrs.h>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <memory>

namespace agent {

std::vector<std::string> ownAddresses() {
  ifaddrs* found = nullptr;
  if (::getifaddrs(&found) != 0) {
    return {};
  }
  const std::unique_ptr<ifaddrs, void (*)(ifaddrs*)> list(found, ::freeifaddrs);
  std::vector<std::string> result;
  for (const ifaddrs* each = list.get(); each != nullptr; each = each->ifa_next) {
    const int family = each->ifa_addr == nullptr ? AF_UNSPEC : each->ifa_addr->sa_family;
    const auto size =
        static_cast<socklen_t>(family == AF_INET ? sizeof(sockaddr_in) : sizeof(sockaddr_in6));
    char text[NI_MAXHOST] = "";
    if ((family == AF_INET || family == AF_INET6) &&
        ::getnameinfo(each->ifa_addr, size, text, sizeof text, nullptr, 0, NI_NUMERICHOST) == 0) {
      result.emplace_back(text);
    }
  }
  return result;
}

}  // namespace agent
