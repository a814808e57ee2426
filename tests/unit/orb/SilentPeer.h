// A server that accepts connections and never replies.

#ifndef TESTS_UNIT_ORB_SILENTPEER_H
#define TESTS_UNIT_ORB_SILENTPEER_H

#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <stdexcept>
#include <string>
#include <vector>

namespace orb_tests {

class SilentPeer {
 public:
  // With the backlog 0, a second client cannot connect before the first client is accepted.
  explicit SilentPeer(int backlog = 64) : socket_(::socket(AF_INET, SOCK_STREAM, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* const general = reinterpret_cast<sockaddr*>(&address);
    if (::bind(socket_, general, size) != 0 || ::listen(socket_, backlog) != 0 ||
        ::getsockname(socket_, general, &size) != 0) {
      throw std::runtime_error("no socket");
    }
    port_ = ntohs(address.sin_port);
  }
  // Closes the listening socket before the connections, so that no client can reconnect.
  ~SilentPeer() {
    ::close(socket_);
    for (const int connection : connections_) {
      ::close(connection);
    }
  }
  SilentPeer(const SilentPeer&) = delete;
  SilentPeer& operator=(const SilentPeer&) = delete;

  // Waits until a client has connected and sent a byte.
  void waitForRequest() {
    connections_.push_back(::accept(socket_, nullptr, nullptr));
    char first = 0;
    if (::recv(connections_.back(), &first, 1, 0) != 1) {
      throw std::runtime_error("no request");
    }
  }

  std::string address() const { return "iiop:1.2@127.0.0.1:" + std::to_string(port_); }

  // Accepts a connection and keeps it open. Returns false if no client connects in time.
  bool accept(std::chrono::milliseconds patience) {
    pollfd wait{socket_, POLLIN, 0};
    if (::poll(&wait, 1, static_cast<int>(patience.count())) != 1) {
      return false;
    }
    connections_.push_back(::accept(socket_, nullptr, nullptr));
    return true;
  }

  std::uint16_t port() const { return port_; }

  std::string corbaloc() const { return "corbaloc:" + address() + "/Key"; }

 private:
  const int socket_;
  std::uint16_t port_ = 0;
  std::vector<int> connections_;
};

}  // namespace orb_tests

#endif
