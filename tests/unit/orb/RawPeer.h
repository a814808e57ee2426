// A server that answers requests without an ORB.

#ifndef TESTS_UNIT_ORB_RAWPEER_H
#define TESTS_UNIT_ORB_RAWPEER_H

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <string>
#include <thread>
#include <utility>

namespace orb_tests {

// A server that reads one request from each connection, sends an answer, and closes the connection.
// Serves one connection at a time.
class RawPeer {
 public:
  using Answer = std::function<std::string(const std::string& request)>;

  // host: a numeric IPv4 address of the loopback.
  explicit RawPeer(Answer answer, std::string host = "127.0.0.1")
      : answer_(std::move(answer)),
        host_(std::move(host)),
        listener_(socket(AF_INET, SOCK_STREAM, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    inet_pton(AF_INET, host_.c_str(), &address.sin_addr);
    socklen_t size = sizeof address;
    auto* const general = reinterpret_cast<sockaddr*>(&address);
    bind(listener_, general, size);
    listen(listener_, 8);
    getsockname(listener_, general, &size);
    port_ = ntohs(address.sin_port);
    thread_ = std::thread([this] { serve(); });
  }
  explicit RawPeer(const std::string& answer)
      : RawPeer([answer](const std::string&) { return answer; }) {}
  ~RawPeer() {
    shutdown(listener_, SHUT_RDWR);
    thread_.join();
    close(listener_);
  }
  RawPeer(const RawPeer&) = delete;
  RawPeer& operator=(const RawPeer&) = delete;

  const std::string& host() const { return host_; }
  std::uint16_t port() const { return port_; }
  int connections() const { return connections_; }
  int requests() const { return requests_; }

  // host: a name or an address of the peer's host.
  std::string corbaloc(const std::string& host) const {
    return "corbaloc:iiop:1.2@" + host + ":" + std::to_string(port_) + "/Key";
  }
  std::string corbaloc() const { return corbaloc(host_); }

 private:
  void serve() {
    int connection = accept(listener_, nullptr, nullptr);
    while (connection >= 0) {
      ++connections_;
      char request[4096];
      const ssize_t size = recv(connection, request, sizeof request, 0);
      if (size > 0) {
        ++requests_;
        const std::string answer = answer_(std::string(request, static_cast<std::size_t>(size)));
        send(connection, answer.data(), answer.size(), MSG_NOSIGNAL);
      }
      close(connection);
      connection = accept(listener_, nullptr, nullptr);
    }
  }

  const Answer answer_;
  const std::string host_;
  const int listener_;
  std::uint16_t port_ = 0;
  std::atomic<int> connections_{0};
  std::atomic<int> requests_{0};
  std::thread thread_;
};

}  // namespace orb_tests

#endif
