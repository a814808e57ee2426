// A client that writes its requests itself, well or not.

#ifndef TESTS_UNIT_ORB_RAWCLIENT_H
#define TESTS_UNIT_ORB_RAWCLIENT_H

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <string>

#include "orb/orb.h"

namespace orb_tests {

// A GIOP message, little-endian. Numbers are aligned from its beginning.
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

  // With its size in the header.
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

// A GIOP 1.0 request, number 1, up to its parameters.
inline Message requestTo(const std::string& key, const std::string& operation) {
  return Message(0, Message::Type::kRequest, false)
      .number(0)  // service contexts
      .number(1)
      .octet(1)  // a reply is expected
      .octets(key)
      .text(operation)
      .number(0);  // principal
}

class RawClient {
 public:
  // A receive buffer of 0 bytes: as large as the system makes it.
  explicit RawClient(const orb::Endpoint& endpoint, int receiveBuffer = 0)
      : socket_(socket(AF_INET, SOCK_STREAM, 0)) {
    if (receiveBuffer > 0) {
      setsockopt(socket_, SOL_SOCKET, SO_RCVBUF, &receiveBuffer, sizeof receiveBuffer);
    }
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(endpoint.port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    // A client that is not connected shows it at its first send or receive.
    static_cast<void>(connect(socket_, reinterpret_cast<sockaddr*>(&address), sizeof address));
  }
  ~RawClient() { close(socket_); }
  RawClient(const RawClient&) = delete;
  RawClient& operator=(const RawClient&) = delete;

  // Whether the peer still took it.
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

  // Reads an answer; false when there is none.
  bool answer() const { return receive().size() > 12; }

  // Up to 4096 bytes of an answer; empty at the end of the connection, or when nothing comes.
  std::string receive() const {
    char bytes[4096];
    const ssize_t count = isAnswered() ? recv(socket_, bytes, sizeof bytes, 0) : 0;
    return std::string(bytes, count > 0 ? static_cast<std::size_t>(count) : 0);
  }

  // Waits for the end of the connection. REQUIRES: no answer is to come.
  bool isClosedByPeer() const {
    char byte = 0;
    return isAnswered() && recv(socket_, &byte, 1, 0) <= 0;
  }

  // Waits for an answer, or for the end of the connection.
  bool isAnswered() const {
    pollfd wait{socket_, POLLIN, 0};
    return poll(&wait, 1, 20000) == 1;
  }

 private:
  const int socket_;
};

}  // namespace orb_tests

#endif
