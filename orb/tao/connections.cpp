#include "connections.h"

#include <netdb.h>
#include <sys/socket.h>

#include <algorithm>
#include <utility>

namespace orb {
namespace {

using Clock = std::chrono::steady_clock;

// Without a host when the connection has ended already.
Endpoint peerOf(int socket) {
  sockaddr_storage address{};
  socklen_t size = sizeof address;
  auto* const general = reinterpret_cast<sockaddr*>(&address);
  char host[NI_MAXHOST] = "";
  char port[NI_MAXSERV] = "0";
  if (getpeername(socket, general, &size) == 0) {
    static_cast<void>(getnameinfo(general, size, host, sizeof host, port, sizeof port,
                                  NI_NUMERICHOST | NI_NUMERICSERV));
  }
  return {host, static_cast<std::uint16_t>(std::stoul(port))};
}

}  // namespace

ServedRequest& servedRequest() {
  thread_local ServedRequest request;
  return request;
}

// A thread that serves a connection serves nothing else.
std::string currentPeer() {
  const std::shared_ptr<Connection>& connection = servedRequest().connection;
  return connection ? connection->peer() : "";
}

Connection::Connection(int socket) : socket_(socket), peer_(peerOf(socket)) {}

void Connection::stopReading() const {
  static_cast<void>(::shutdown(socket_, SHUT_RD));
}

void Connection::cut() const {
  const linger atOnce{1, 0};  // reset when it is closed
  static_cast<void>(setsockopt(socket_, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce));
  static_cast<void>(::shutdown(socket_, SHUT_RDWR));
}

void Connection::hurry() {
  const std::lock_guard<std::mutex> lock(mutex_);
  hurried_ = true;
}

bool Connection::isHurried() const {
  const std::lock_guard<std::mutex> lock(mutex_);
  return hurried_;
}

void Connection::beginRequest(const ObjectKey& target) {
  const std::lock_guard<std::mutex> lock(mutex_);
  target_ = target;
  hurried_ = false;
}

ObjectKey Connection::target() const {
  const std::lock_guard<std::mutex> lock(mutex_);
  return target_;
}

bool Refusals::begins() {
  const std::lock_guard<std::mutex> lock(mutex_);
  return episode_.happened(Clock::now());
}

void Refusals::end() {
  std::unique_lock<std::mutex> lock(mutex_);
  const std::optional<std::size_t> count = episode_.over(Clock::now());
  lock.unlock();
  if (count && log_) {
    log_(std::to_string(*count) + overText_);
  }
}

Connections::Connections(const Options& options, const LogFunction& log)
    : options_(options),
      limits_{std::min(options.maxRequestBytes, options.maxMessageBytes), options.maxMessageBytes,
              options.largeOperations},
      log_(log),
      budget_(options.maxMessageBytes),
      refused_(log, " connections were refused"),
      tooLarge_(log, " requests were refused for their size"),
      incomplete_(log, " connections were closed because of incomplete requests") {}

std::shared_ptr<Connection> Connections::admit(int socket) {
  const auto connection = std::make_shared<Connection>(socket);
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (closing_) {
      return nullptr;
    }
    if (connections_.size() < options_.maxConnections) {
      connections_.insert(connection);
      return connection;
    }
  }
  refused_.add([this] {
    return "connections are refused: " + std::to_string(options_.maxConnections) +
           " connections, the limit, are open";
  });
  return nullptr;
}

void Connections::remove(const std::shared_ptr<Connection>& connection) {
  const std::lock_guard<std::mutex> lock(mutex_);
  connections_.erase(connection);
  removed_.notify_all();
}

void Connections::noteNoDescriptor() {
  refused_.add([this] {
    return "connections are refused: no file descriptor is left, " + std::to_string(count()) +
           " connections are open";
  });
}

void Connections::noteNoMemory() {
  refused_.add([] { return "connections are refused: no memory is left"; });
}

void Connections::noteIncomplete() {
  incomplete_.add([] { return "a connection was closed: its request was not complete in time"; });
}

void Connections::noteUnread(const Connection& connection) const {
  if (log_) {
    log_("connection from " + format(connection.address()) +
         " is shut down: its client does not read or send");
  }
}

void Connections::noteTooLarge(const Connection& connection, const Assembler::Request& request) {
  tooLarge_.add([&] {
    return "a request of " + request.refused->operation + ", " +
           std::to_string(request.declaredBytes) + " bytes from " + connection.peer() +
           ", was refused for its size";
  });
}

void Connections::noteWhatIsOver() {
  for (Refusals* const refusals : {&refused_, &tooLarge_, &incomplete_}) {
    refusals->end();
  }
}

void Connections::hurry(const std::function<bool(const ObjectKey&)>& concerns) {
  const std::lock_guard<std::mutex> lock(mutex_);
  for (const auto& connection : connections_) {
    if (concerns(connection->target())) {
      connection->hurry();
    }
  }
}

void Connections::close() {
  std::unique_lock<std::mutex> lock(mutex_);
  closing_ = true;
  for (const auto& connection : connections_) {
    connection->stopReading();
    connection->hurry();
  }
  removed_.wait(lock, [this] { return connections_.empty(); });
}

bool Connections::isClosing() const {
  const std::lock_guard<std::mutex> lock(mutex_);
  return closing_;
}

std::size_t Connections::count() const {
  const std::lock_guard<std::mutex> lock(mutex_);
  return connections_.size();
}

}  // namespace orb
