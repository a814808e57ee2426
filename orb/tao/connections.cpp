#include "connections.h"

#include <sys/socket.h>

#include <algorithm>
#include <utility>
#include <vector>

#include "../addresses.h"

namespace orb {
namespace {

using Clock = std::chrono::steady_clock;

}  // namespace

ServedRequest& servedRequest() {
  thread_local ServedRequest request;
  return request;
}

// A thread serves one connection only.
Peer currentPeer() {
  const std::shared_ptr<Connection>& connection = servedRequest().connection;
  return connection ? connection->peer() : Peer();
}

Connection::Connection(int socket, Transport transport, std::size_t endpoint)
    : socket_(socket), address_(peerEndpoint(socket)), peer_(peerOf(socket, transport, endpoint)) {}

void Connection::stopReading() const {
  static_cast<void>(::shutdown(socket_, SHUT_RD));
}

void Connection::reset() const {
  const linger noLinger{1, 0};  // close() sends a reset
  static_cast<void>(setsockopt(socket_, SOL_SOCKET, SO_LINGER, &noLinger, sizeof noLinger));
  static_cast<void>(::shutdown(socket_, SHUT_RDWR));
}

void Connection::beginDrain() {
  const MutexLock lock(mutex_);
  draining_ = true;
}

bool Connection::isDraining() const {
  const MutexLock lock(mutex_);
  return draining_;
}

void Connection::beginRequest(const ObjectKey& target) {
  const MutexLock lock(mutex_);
  target_ = target;
  draining_ = false;
}

ObjectKey Connection::target() const {
  const MutexLock lock(mutex_);
  return target_;
}

Connections::UnixSocket::UnixSocket(const std::string& path)
    : socket(listenOnUnixSocket(path)), file(path) {}

Connections::Connections(const Options& options, std::vector<Endpoint> endpoints,
                         std::shared_ptr<TlsContext> tls, const LogFunction& log)
    : options_(options),
      endpoints_(std::move(endpoints)),
      tls_(std::move(tls)),
      limits_(requestLimits(options)),
      log_(log),
      limitLog_(log),
      budget_(options.maxMessageBytes),
      addresses_(options.publish) {
  listenOnUnixSockets();
}

void Connections::listenOnUnixSockets() {
  for (const Endpoint& endpoint : endpoints_) {
    if (endpoint.transport != Transport::kUnix) {
      continue;
    }
    try {
      if (endpoint.host.find_first_of(";|") != std::string::npos) {
        throw EndpointError("the path contains one of the characters ;|");
      }
      unixSockets_.try_emplace(endpoint.host, endpoint.host);
    } catch (const EndpointError& failure) {
      throw EndpointError("cannot listen on " + format(endpoint) + ": " + failure.what());
    }
  }
}

int Connections::takeUnixSocket(const std::string& path) {
  const auto found = unixSockets_.find(path);
  return found == unixSockets_.end() ? -1 : found->second.socket.release();
}

std::shared_ptr<Connection> Connections::admit(int socket) {
  const std::size_t endpoint = endpointOf(socket);
  const Transport transport = addresses_.bound()[endpoint].transport;
  const auto connection = std::make_shared<Connection>(socket, transport, endpoint);
  {
    const MutexLock lock(mutex_);
    if (closing_) {
      return nullptr;
    }
    if (connections_.size() < options_.maxConnections) {
      connections_.insert(connection);
      return connection;
    }
  }
  limitLog_.tooManyConnections(options_.maxConnections, Clock::now());
  return nullptr;
}

void Connections::remove(const std::shared_ptr<Connection>& connection) {
  const MutexLock lock(mutex_);
  connections_.erase(connection);
  removed_.notify_all();
}

void Connections::logNoDescriptor() {
  limitLog_.outOfDescriptors(count(), Clock::now());
}

void Connections::logNoMemory() {
  limitLog_.outOfMemory(Clock::now());
}

void Connections::logIncomplete() {
  limitLog_.requestIncomplete(Clock::now());
}

void Connections::logHandshake(const Connection& connection, const std::string& reason) {
  limitLog_.handshakeFailed(connection.peer().address, reason, Clock::now());
}

void Connections::logUnread(const Connection& connection) const {
  if (log_) {
    log_("connection from " + format(connection.address()) +
         " is shut down: its client does not read or send");
  }
}

void Connections::logTooLarge(const Connection& connection, const Assembler::Request& request) {
  limitLog_.requestTooLarge(request.refused->operation, request.declaredBytes,
                            connection.peer().address, Clock::now());
}

void Connections::endEpisodes() {
  limitLog_.endEpisodes(Clock::now());
}

void Connections::drain(const std::function<bool(const ObjectKey&)>& matches) {
  const MutexLock lock(mutex_);
  for (const auto& connection : connections_) {
    if (matches(connection->target())) {
      connection->beginDrain();
    }
  }
}

void Connections::close() {
  MutexLock lock(mutex_);
  closing_ = true;
  for (const auto& connection : connections_) {
    connection->stopReading();
    connection->beginDrain();
  }
  removed_.wait(lock.native(), [this]() REQUIRES(mutex_) { return connections_.empty(); });
  unixSockets_.clear();
}

bool Connections::isClosing() const {
  const MutexLock lock(mutex_);
  return closing_;
}

// Returns the index of the endpoint that accepted the connection.
std::size_t Connections::endpointOf(int socket) const {
  const std::vector<Endpoint>& bound = addresses_.bound();
  const auto found =
      std::find_if(bound.begin(), bound.end(), [own = localEndpoint(socket)](const Endpoint& each) {
        return each.port == own.port &&
               (own.transport == Transport::kUnix) == (each.transport == Transport::kUnix) &&
               (own.transport != Transport::kUnix || each.host == own.host);
      });
  return found == bound.end() ? 0 : static_cast<std::size_t>(found - bound.begin());
}

std::size_t Connections::count() const {
  const MutexLock lock(mutex_);
  return connections_.size();
}

}  // namespace orb
