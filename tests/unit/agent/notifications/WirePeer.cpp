#include "tests/unit/agent/notifications/WirePeer.h"

#include <arpa/inet.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstring>
#include <stdexcept>
#include <utility>

namespace notification_tests {
namespace {

// The layout of GIOP 1.2 messages.
constexpr std::size_t kHeader = 12;
constexpr std::size_t kFlags = 6;
constexpr std::size_t kType = 7;
constexpr std::size_t kSize = 8;
constexpr char kRequest = 0;
constexpr char kReply = 1;
constexpr char kLocateRequest = 3;
constexpr char kLocateReply = 4;
constexpr char kLittleEndian = 1;

int openListener() {
  const int listener = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  if (listener < 0 || bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
    throw std::runtime_error("no socket");
  }
  return listener;
}

std::uint16_t portOf(int socket) {
  sockaddr_in address{};
  socklen_t length = sizeof address;
  getsockname(socket, reinterpret_cast<sockaddr*>(&address), &length);
  return ntohs(address.sin_port);
}

bool readAll(int connection, std::string& bytes, std::size_t count) {
  std::size_t have = bytes.size();
  bytes.resize(have + count);
  while (have < bytes.size()) {
    const ssize_t got = read(connection, &bytes[have], bytes.size() - have);
    if (got <= 0) {
      return false;
    }
    have += static_cast<std::size_t>(got);
  }
  return true;
}

std::uint32_t numberAt(const std::string& bytes, std::size_t offset) {
  std::uint32_t number = 0;
  std::memcpy(&number, bytes.data() + offset, sizeof number);
  const bool little = (bytes[kFlags] & kLittleEndian) != 0;
  return little ? number : ntohl(number);
}

std::string asBytes(std::uint32_t number) {
  std::string bytes(sizeof number, '\0');
  std::memcpy(bytes.data(), &number, sizeof number);
  return bytes;
}

void answer(int connection, char type, const std::string& body) {
  const std::string header{'G', 'I', 'O', 'P', 1, 2, kLittleEndian, type};
  const std::string message = header + asBytes(static_cast<std::uint32_t>(body.size())) + body;
  send(connection, message.data(), message.size(), MSG_NOSIGNAL);
}

// An empty result, or the boolean of the operations that every object has.
void reply(int connection, const std::string& message) {
  const std::string id = asBytes(numberAt(message, kHeader));
  if (message[kType] == kLocateRequest) {
    answer(connection, kLocateReply, id + asBytes(1));
    return;
  }
  std::string body = id + asBytes(0) + asBytes(0);
  if (message.find("_is_a") != std::string::npos) {
    body += '\1';
  } else if (message.find("_non_existent") != std::string::npos) {
    body += '\0';
  }
  answer(connection, kReply, body);
}

}  // namespace

WirePeer::WirePeer(std::string operation, std::vector<Act> acts)
    : operation_(std::move(operation)), acts_(std::move(acts)), listener_(openListener()) {
  listen(listener_, 10);
  port_ = portOf(listener_);
  if (pipe(wake_) != 0) {
    throw std::runtime_error("no pipe");
  }
  thread_ = std::thread([this] { run(); });
}

WirePeer::~WirePeer() {
  close(wake_[1]);
  thread_.join();
  close(wake_[0]);
  close(listener_);
}

std::string WirePeer::reference() const {
  return "corbaloc:iiop:1.2@127.0.0.1:" + std::to_string(port_) + "/object";
}

void WirePeer::run() {
  std::vector<pollfd> sockets{{wake_[0], POLLIN, 0}, {listener_, POLLIN, 0}};
  while (poll(sockets.data(), sockets.size(), -1) > 0 && sockets[0].revents == 0) {
    for (std::size_t i = sockets.size(); i-- > 2;) {
      if (sockets[i].revents != 0 && !serve(sockets[i].fd)) {
        close(sockets[i].fd);
        sockets.erase(sockets.begin() + static_cast<std::ptrdiff_t>(i));
      }
    }
    if (sockets[1].revents != 0) {
      sockets.push_back({accept(listener_, nullptr, nullptr), POLLIN, 0});
    }
  }
  for (std::size_t i = 2; i < sockets.size(); ++i) {
    close(sockets[i].fd);
  }
}

// Serves one message. Returns false when the peer must close the connection.
bool WirePeer::serve(int connection) {
  std::string message;
  if (!readAll(connection, message, kHeader) ||
      !readAll(connection, message, numberAt(message, kSize))) {
    return false;
  }
  if (message[kType] != kRequest && message[kType] != kLocateRequest) {
    return true;
  }
  const Act act = actOn(message);
  if (act == Act::kAnswer) {
    reply(connection, message);
  }
  return act != Act::kClose;
}

WirePeer::Act WirePeer::actOn(const std::string& message) {
  const std::string nul(1, '\0');
  if (message.find(nul + operation_ + nul) == std::string::npos) {
    return Act::kAnswer;
  }
  Act act = Act::kAnswer;
  if (!acts_.empty()) {
    act = acts_.front();
    acts_.erase(acts_.begin());
  }
  requests_.add(act);
  return act;
}

std::uint16_t closedPort() {
  const int listener = openListener();
  const std::uint16_t port = portOf(listener);
  close(listener);
  return port;
}

}  // namespace notification_tests
