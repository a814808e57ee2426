#include "listener.h"

#include <omniORB4/internal/tcpSocket.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <new>
#include <system_error>
#include <utility>

#include "../../addresses.h"
#include "connection.h"
#include "tlsstream.h"

namespace orb {
namespace {

// Bytes received from one connection before the next connection is read. Small, because this number
// bounds how many messages of minimal size the other connections wait for.
constexpr std::size_t kScratchBytes = 4096;
constexpr std::chrono::milliseconds kAcceptPause{100};
constexpr std::chrono::milliseconds kStarvedPause{20};

// The ORB's name of a transport.
const char* typeOf(Transport transport) {
  switch (transport) {
    case Transport::kUnix:
      return "giop:unix";
    case Transport::kTls:
      return "giop:ssl";
    default:
      return "giop:tcp";
  }
}

std::string pathOrAddress(const Endpoint& endpoint) {
  return endpoint.transport == Transport::kUnix ? endpoint.host : format(endpoint);
}

// address: in the ORB's notation, "giop:tcp:HOST:PORT".
Endpoint boundEndpoint(const char* address, const Endpoint& requested) {
  if (requested.transport == Transport::kUnix) {
    return requested;
  }
  Endpoint bound = parseEndpoint(address + std::strlen(typeOf(requested.transport)) + 1);
  bound.transport = requested.transport;
  bound.inReferences = requested.inReferences;
  return bound;
}

}  // namespace

Listener::Listener(std::shared_ptr<ServerState> state, std::size_t index)
    : state_(std::move(state)), index_(index), scratch_(kScratchBytes, '\0') {}

const char* Listener::type() const {
  return typeOf(endpoint().transport);
}

const char* Listener::address() const {
  return addresses_[0];
}

const omni::orbServer::EndpointList* Listener::addresses() const {
  return &addresses_;
}

// Publishes the first address only, or the address in the options, and ignores the publish settings
// of the ORB.
_CORBA_Boolean Listener::publish(const omni::orbServer::PublishSpecs& /*specs*/,
                                 _CORBA_Boolean /*allSpecs*/, _CORBA_Boolean /*allEndpoints*/,
                                 omni::orbServer::EndpointList& published) {
  if (!endpoint().inReferences) {
    return true;
  }
  const std::string text =
      std::string(type()) + ":" + pathOrAddress(state_->addresses.published()[index_]);
  const CORBA::ULong count = published.length();
  omni::orbServer::EndpointList all(count + 1);
  all.length(count + 1);
  for (CORBA::ULong i = 0; i < count; ++i) {
    all[i] = published[i];
  }
  all[count] = text.c_str();
  published = all;
  return giopEndpoint::addToIOR(text.c_str());
}

_CORBA_Boolean Listener::Bind() {
  const int socket = endpoint().transport == Transport::kUnix ? bindToPath() : bindToHost();
  if (socket == RC_INVALID_SOCKET) {
    return false;
  }
  omni::tcpSocket::setNonBlocking(socket);
  omni::tcpSocket::setCloseOnExec(socket);
  acceptor_.emplace(socket);
  try {
    channels_ = std::make_shared<Channels>(state_, socket);
  } catch (const std::system_error& failure) {
    writeLog(failure.what());
    return false;
  }
  state_->addresses.add(boundEndpoint(addresses_[0], endpoint()));
  return true;
}

int Listener::bindToHost() {
  char* boundHost = nullptr;
  CORBA::UShort boundPort = 0;
  const int socket =
      omni::tcpSocket::Bind(endpoint().host.c_str(), endpoint().port, endpoint().port, type(),
                            boundHost, boundPort, addresses_);
  if (socket != RC_INVALID_SOCKET) {
    CORBA::string_free(boundHost);
  }
  return socket;
}

int Listener::bindToPath() {
  const std::string& path = endpoint().host;
  try {
    const int socket = listenOnUnixSocket(path);
    file_.emplace(path);
    addresses_.length(1);
    addresses_[0] = (std::string(type()) + ":" + path).c_str();
    return socket;
  } catch (const EndpointError& failure) {
    writeLog(failure.what());
    return RC_INVALID_SOCKET;
  }
}

omni::giopConnection* Listener::AcceptAndMonitor(omni::giopConnection::notifyReadable_t notify,
                                                 void* cookie) {
  // Throws nothing, because after an exception the ORB never serves the endpoint again.
  while (!poked_) {
    const Channels::Events events =
        channels_->wait(millisecondsToNextTimer(std::chrono::steady_clock::now()));
    const Time now = std::chrono::steady_clock::now();
    for (std::size_t i = 0; i < events.readableCount; ++i) {
      attend(events.readable[i], notify, cookie, now);
    }
    for (const Watcher::Id id : events.toAttend) {
      attend(id, notify, cookie, now);
    }
    for (const Watcher::Id id : std::exchange(starved_, {})) {
      attend(id, notify, cookie, now);
    }
    runTimers(now);
    if (omni::giopConnection* const connection = events.incoming ? accept(now) : nullptr) {
      return connection;
    }
  }
  return nullptr;
}

void Listener::Poke() {
  poked_ = true;
  channels_->wake();
}

void Listener::Shutdown() {
  delete this;
}

// Accepts a connection. Closes the connection when memory is short. Null without a connection.
omni::giopConnection* Listener::accept(Time now) {
  try {
    return acceptOne(now);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

omni::giopConnection* Listener::acceptOne(Time now) {
  int socket = -1;
  switch (acceptor_->accept(socket)) {
    case Acceptor::Outcome::kAccepted:
      return admit(Descriptor(socket), now);
    case Acceptor::Outcome::kNone:
      break;
    case Acceptor::Outcome::kFailed:
      resumeAccept_ = now + kAcceptPause;
      channels_->listen(false);
      [[fallthrough]];
    case Acceptor::Outcome::kRefused:
      limitLog_.outOfDescriptors(state_->connections, now);
      break;
  }
  return nullptr;
}

std::unique_ptr<Stream> Listener::makeStream(Descriptor socket) const {
  Peer peer = peerOf(socket.get(), endpoint().transport, index_);
  return endpoint().transport == Transport::kTls
             ? std::make_unique<TlsStream>(std::move(socket), std::move(peer), *state_->tls)
             : std::make_unique<Stream>(std::move(socket), std::move(peer));
}

omni::giopConnection* Listener::admit(Descriptor socket, Time now) {
  if (state_->connections >= state_->limits.connections) {
    limitLog_.tooManyConnections(state_->limits.connections, now);
    return nullptr;
  }
  std::pair<Watcher::Id, std::shared_ptr<Channel>> added;
  try {
    added = channels_->add(makeStream(std::move(socket)), now);
  } catch (const std::bad_alloc&) {
    limitLog_.outOfMemory(now);
    return nullptr;
  }
  const auto release = [channels = channels_, id = added.first] { channels->remove(id); };
  try {
    auto* const connection = new Connection(added.second, type(), release);
    channels_->connect(added.first, connection);
    scheduleExpiry(expiryOf(channels_->find(added.first)));
    return connection;
  } catch (const std::bad_alloc&) {
    channels_->remove(added.first);
    return nullptr;
  }
}

void Listener::attend(Watcher::Id id, omni::giopConnection::notifyReadable_t notify, void* cookie,
                      Time now) {
  const Channels::Entry entry = channels_->find(id);
  if (!entry.channel) {
    return;
  }
  const bool wasOpen = entry.channel->stream().isOpen();
  const Channel::State state = entry.channel->attend(scratch_.data(), scratch_.size(), now);
  try {
    if (!wasOpen) {
      logFailure(*entry.channel, now);
    }
    if (state == Channel::State::kReady) {
      logRefused(*entry.channel, now);
      notify(cookie, entry.connection);
      entry.channel->finishNotification();
    } else if (state == Channel::State::kStarved) {
      starved_.push_back(id);
    }
  } catch (const std::bad_alloc&) {
    if (state == Channel::State::kReady) {
      entry.channel->cancelNotification();
    }
    channels_->attend(id);
  }
  scheduleExpiry(expiryOf(entry));
}

void Listener::logRefused(const Channel& channel, Time now) {
  if (const auto refused = channel.refusedRequest()) {
    limitLog_.requestTooLarge(refused->operation, refused->bytes, channel.stream().address(), now);
  }
}

void Listener::logFailure(const Channel& channel, Time now) {
  const std::string failure = channel.stream().takeFailure();
  if (!failure.empty()) {
    limitLog_.handshakeFailed(channel.stream().address(), failure, now);
  }
}

// The time at which the handshake or the request of a connection has to be complete.
std::optional<Listener::Time> Listener::expiryOf(const Channels::Entry& entry) const {
  if (!entry.channel->stream().isOpen()) {
    return entry.accepted + state_->limits.handshakeTime;
  }
  const std::optional<Time> since = entry.channel->incompleteSince();
  const bool limited = since && state_->limits.requestTime.count() > 0;
  return limited ? std::optional(*since + state_->limits.requestTime) : std::nullopt;
}

void Listener::scheduleExpiry(std::optional<Time> expiry) {
  if (expiry) {
    nextExpiry_ = nextExpiry_ ? std::min(*nextExpiry_, *expiry) : expiry;
  }
}

// Shuts down the connections whose handshake or request exceeds its time.
void Listener::expire(Time now) {
  nextExpiry_.reset();
  for (const auto& [id, entry] : channels_->all()) {
    const std::optional<Time> expiry = expiryOf(entry);
    if (expiry && *expiry <= now) {
      logExpiry(*entry.channel, now);
      entry.channel->shutDown();
    } else {
      scheduleExpiry(expiry);
    }
  }
}

// A failed handshake was logged already.
void Listener::logExpiry(const Channel& channel, Time now) {
  if (channel.stream().isOpen()) {
    limitLog_.requestIncomplete(now);
  } else if (!channel.stream().hasFailed()) {
    limitLog_.handshakeFailed(channel.stream().address(), "it was not complete in time", now);
  }
}

void Listener::runTimers(Time now) {
  if (resumeAccept_ && *resumeAccept_ <= now) {
    resumeAccept_.reset();
    channels_->listen(true);
  }
  try {
    if (nextExpiry_ && *nextExpiry_ <= now) {
      expire(now);
    }
    limitLog_.endEpisodes(now);
  } catch (const std::bad_alloc&) {
    nextExpiry_ = now + kStarvedPause;
  }
}

int Listener::millisecondsToNextTimer(Time now) const {
  std::optional<Time> next;
  const auto consider = [&next](std::optional<Time> time) {
    if (time) {
      next = next ? std::min(*next, *time) : time;
    }
  };
  consider(resumeAccept_);
  consider(nextExpiry_);
  consider(limitLog_.nextEnd());
  if (!starved_.empty()) {
    consider(now + kStarvedPause);
  }
  if (!next) {
    return -1;
  }
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(*next - now);
  return static_cast<int>(std::clamp<std::chrono::milliseconds::rep>(left.count(), 0, INT_MAX));
}

}  // namespace orb
