// A client that writes GIOP messages without an ORB.

#ifndef TESTS_UNIT_ORB_RAWCLIENT_H
#define TESTS_UNIT_ORB_RAWCLIENT_H

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <chrono>
#include <string>

#include "orb/orb.h"

namespace orb_tests {

// A little-endian GIOP message. Numbers are aligned to the beginning of the message.
class Message {
 public:
  enum class Type : char { kRequest = 0, kReply = 1, kFragment = 7 };

  Message(char minorVersion, Type type, bool moreFragments) {
    bytes_ = {'G', 'I', 'O', 'P', 1, minorVersion};
    bytes_.push_back(moreFragments ? 3 : 1);
    bytes_.push_back(static_cast<char>(type));
    bytes_.append(4, '\0');
  }

  Message& number(std::uint32_t value) {
    align(4);
    append(value);
    return *this;
  }
  Message& octet(char value) {
    bytes_.push_back(value);
    return *this;
  }
  Message& octets(const std::string& value) {
    number(static_cast<std::uint32_t>(value.size()));
    return raw(value);
  }
  Message& text(const std::string& value) { return octets(value + '\0'); }
  Message& raw(const std::string& value) {
    bytes_ += value;
    return *this;
  }
  Message& align(std::size_t boundary) {
    bytes_.append((boundary - bytes_.size() % boundary) % boundary, '\0');
    return *this;
  }

  // Returns the message with its size in the header.
  std::string bytes() const {
    constexpr std::size_t kHeader = 12;
    Message whole = *this;
    whole.bytes_.resize(kHeader - 4);
    whole.append(static_cast<std::uint32_t>(bytes_.size() - kHeader));
    return whole.bytes_ + bytes_.substr(kHeader);
  }

 private:
  void append(std::uint32_t value) {
    for (int shift = 0; shift < 32; shift += 8) {
      bytes_.push_back(static_cast<char>(value >> shift));
    }
  }

  std::string bytes_;
};

// Returns a GIOP 1.0 request with id 1, up to the arguments.
inline Message requestTo(const std::string& key, const std::string& operation) {
  return Message(0, Message::Type::kRequest, false)
      .number(0)  // service contexts
      .number(1)
      .octet(1)  // reply expected
      .octets(key)
      .text(operation)
      .number(0);  // principal
}

class RawClient {
 public:
  // `receiveBuffer` in bytes; 0: the system's default. `source`: the client's own IPv4
  // address; INADDR_ANY: the system's choice.
  explicit RawClient(const orb::Endpoint& endpoint, int receiveBuffer = 0,
                     in_addr_t source = INADDR_ANY)
      : socket_(::socket(isPath(endpoint) ? AF_UNIX : AF_INET, SOCK_STREAM, 0)) {
    if (isPath(endpoint)) {
      sockaddr_un address{};
      address.sun_family = AF_UNIX;
      endpoint.host.copy(address.sun_path, sizeof address.sun_path - 1);
      static_cast<void>(connect(socket_, reinterpret_cast<sockaddr*>(&address), sizeof address));
      return;
    }
    if (receiveBuffer > 0) {
      setsockopt(socket_, SOL_SOCKET, SO_RCVBUF, &receiveBuffer, sizeof receiveBuffer);
    }
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(source);
    if (source != INADDR_ANY) {
      static_cast<void>(bind(socket_, reinterpret_cast<sockaddr*>(&address), sizeof address));
    }
    address.sin_port = htons(endpoint.port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    // If the connection fails, the first send or receive fails.
    static_cast<void>(connect(socket_, reinterpret_cast<sockaddr*>(&address), sizeof address));
  }
  ~RawClient() { close(socket_); }
  RawClient(const RawClient&) = delete;
  RawClient& operator=(const RawClient&) = delete;

  int socket() const { return socket_; }

  // Returns false if the peer has closed the connection.
  bool send(const std::string& bytes) const {
    std::size_t sent = 0;
    while (sent < bytes.size()) {
      const ssize_t count = ::send(socket_, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
      if (count <= 0) {
        return false;
      }
      sent += static_cast<std::size_t>(count);
    }
    return true;
  }

  // Ends the stream of requests; replies can still arrive.
  void endSending() const { shutdown(socket_, SHUT_WR); }

  // Reads and drops replies until the end of the connection; returns false after a timeout.
  bool isDrained() const {
    char bytes[4096];
    while (isAnswered()) {
      if (recv(socket_, bytes, sizeof bytes, 0) <= 0) {
        return true;
      }
    }
    return false;
  }

  // Reads a reply; returns false without a reply.
  bool answer() const { return receive().size() > 12; }

  // Returns up to 4096 bytes of a reply; "" at the end of the connection and after a timeout.
  std::string receive() const {
    char bytes[4096];
    const ssize_t count = isAnswered() ? recv(socket_, bytes, sizeof bytes, 0) : 0;
    return std::string(bytes, count > 0 ? static_cast<std::size_t>(count) : 0);
  }

  // Waits for the end of the connection. REQUIRES: no reply is pending.
  bool isClosedByPeer() const {
    char byte = 0;
    return isAnswered() && recv(socket_, &byte, 1, 0) <= 0;
  }

  // Waits for a reply or for the end of the connection.
  bool isAnswered() const {
    pollfd wait{socket_, POLLIN, 0};
    return poll(&wait, 1, 20000) == 1;
  }

 private:
  static bool isPath(const orb::Endpoint& endpoint) {
    return endpoint.transport == orb::Transport::kUnix;
  }

  const int socket_;
};

}  // namespace orb_tests

#endif
