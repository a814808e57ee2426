// A peer that takes connections and never says anything.

#ifndef TESTS_UNIT_ORB_SILENTPEER_H
#define TESTS_UNIT_ORB_SILENTPEER_H

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <stdexcept>
#include <string>

namespace orb_tests {

class SilentPeer {
 public:
  SilentPeer() : socket_(::socket(AF_INET, SOCK_STREAM, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* const general = reinterpret_cast<sockaddr*>(&address);
    if (::bind(socket_, general, size) != 0 || ::listen(socket_, 8) != 0 ||
        ::getsockname(socket_, general, &size) != 0) {
      throw std::runtime_error("no socket");
    }
    port_ = ntohs(address.sin_port);
  }
  ~SilentPeer() { ::close(socket_); }
  SilentPeer(const SilentPeer&) = delete;
  SilentPeer& operator=(const SilentPeer&) = delete;

  std::string corbaloc() const {
    return "corbaloc:iiop:1.2@127.0.0.1:" + std::to_string(port_) + "/Key";
  }

 private:
  const int socket_;
  std::uint16_t port_ = 0;
};

}  // namespace orb_tests

#endif
