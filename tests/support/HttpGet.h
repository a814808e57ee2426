// A client of HTTP endpoints on the loopback.

#ifndef TESTS_SUPPORT_HTTPGET_H
#define TESTS_SUPPORT_HTTPGET_H

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <cstdint>
#include <string>

namespace support {

// A connection to a port of the loopback; functions fail when it is refused. Reads and writes end
// after 20 seconds. Thread-safety: one thread. Ownership: owns the socket. Errors: none.
class HttpConnection {
 public:
  explicit HttpConnection(std::uint16_t port) : socket_(socket(AF_INET, SOCK_STREAM, 0)) {
    const timeval limit{20, 0};
    setsockopt(socket_, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
    setsockopt(socket_, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    static_cast<void>(connect(socket_, reinterpret_cast<sockaddr*>(&address), sizeof address));
  }
  ~HttpConnection() { close(socket_); }
  HttpConnection(const HttpConnection&) = delete;
  HttpConnection& operator=(const HttpConnection&) = delete;

  bool send(const std::string& text) const {
    return ::send(socket_, text.data(), text.size(), MSG_NOSIGNAL) ==
           static_cast<ssize_t>(text.size());
  }

  // Everything until the end of the connection.
  std::string receive() const {
    std::string text;
    char bytes[4096];
    for (ssize_t count = 0; (count = recv(socket_, bytes, sizeof bytes, 0)) > 0;) {
      text.append(bytes, static_cast<std::size_t>(count));
    }
    return text;
  }

 private:
  const int socket_;
};

struct HttpReply {
  int status = 0;  // 0: no answer
  std::string header;
  std::string body;
};

inline HttpReply httpRequest(std::uint16_t port, const std::string& method,
                             const std::string& path) {
  const HttpConnection connection(port);
  if (!connection.send(method + " " + path + " HTTP/1.1\r\nHost: localhost\r\n\r\n")) {
    return {};
  }
  const std::string text = connection.receive();
  const std::size_t end = text.find("\r\n\r\n");
  if (text.compare(0, 9, "HTTP/1.1 ") != 0 || end == std::string::npos) {
    return {};
  }
  return {std::stoi(text.substr(9, 3)), text.substr(0, end), text.substr(end + 4)};
}

inline HttpReply httpGet(std::uint16_t port, const std::string& path) {
  return httpRequest(port, "GET", path);
}

}  // namespace support

#endif
