#include "listener.h"

#include <omniORB4/internal/tcpSocket.h>
#include <omniORB4/omniURI.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <system_error>
#include <utility>

#include "../../addresses.h"
#include "connection.h"

namespace orb {
namespace {

constexpr const char* kTransport = "giop:tcp";
// Bytes received from one connection before the next connection is read. Small, because this number
// bounds how many messages of minimal size the other connections wait for.
constexpr std::size_t kScratchBytes = 4096;
constexpr std::chrono::milliseconds kAcceptPause{100};
constexpr std::chrono::milliseconds kStarvedPause{20};

}  // namespace

Listener::Listener(std::string address, const ChannelLimits& limits)
    : parameter_(std::move(address)), limits_(limits), scratch_(kScratchBytes, '\0') {}

const char* Listener::type() const {
  return kTransport;
}

const char* Listener::address() const {
  return addresses_[0];
}

const omni::orbServer::EndpointList* Listener::addresses() const {
  return &addresses_;
}

// Publishes the first address only and ignores the publish settings of the ORB.
_CORBA_Boolean Listener::publish(const omni::orbServer::PublishSpecs& /*specs*/,
                                 _CORBA_Boolean /*allSpecs*/, _CORBA_Boolean /*allEndpoints*/,
                                 omni::orbServer::EndpointList& published) {
  omni::orbServer::EndpointList all(published.length() + 1);
  all.length(published.length() + 1);
  for (CORBA::ULong i = 0; i < published.length(); ++i) {
    all[i] = published[i];
  }
  all[published.length()] = addresses_[0];
  published = all;
  return giopEndpoint::addToIOR(addresses_[0]);
}

_CORBA_Boolean Listener::Bind() {
  CORBA::UShort firstPort = 0;
  CORBA::UShort lastPort = 0;
  const CORBA::String_var host =
      omni::omniURI::extractHostPortRange(parameter_.c_str(), firstPort, lastPort);
  char* boundHost = nullptr;
  CORBA::UShort boundPort = 0;
  const int socket = omni::tcpSocket::Bind(host, firstPort, lastPort, kTransport, boundHost,
                                           boundPort, addresses_);
  if (socket == RC_INVALID_SOCKET) {
    return false;
  }
  CORBA::string_free(boundHost);
  omni::tcpSocket::setNonBlocking(socket);
  omni::tcpSocket::setCloseOnExec(socket);
  acceptor_.emplace(socket);
  try {
    channels_ =
        std::make_shared<Channels>(limits_.requests, 2 * limits_.requests.messageBytes, socket);
  } catch (const std::system_error& failure) {
    writeLog(failure.what());
    return false;
  }
  return true;
}

omni::giopConnection* Listener::AcceptAndMonitor(omni::giopConnection::notifyReadable_t notify,
                                                 void* cookie) {
  while (!poked_) {
    const Channels::Events events =
        channels_->wait(millisecondsToNextTimer(std::chrono::steady_clock::now()));
    const Time now = std::chrono::steady_clock::now();
    for (const Watcher::Id id : events.toAttend) {
      attend(id, notify, cookie, now);
    }
    for (const Watcher::Id id : std::exchange(starved_, {})) {
      attend(id, notify, cookie, now);
    }
    runTimers(now);
    if (events.incoming) {
      if (omni::giopConnection* const connection = accept(now)) {
        return connection;
      }
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

omni::giopConnection* Listener::accept(Time now) {
  int socket = -1;
  switch (acceptor_->accept(socket)) {
    case Acceptor::Outcome::kAccepted:
      return admit(socket, now);
    case Acceptor::Outcome::kNone:
      break;
    case Acceptor::Outcome::kFailed:
      resumeAccept_ = now + kAcceptPause;
      channels_->listen(false);
      [[fallthrough]];
    case Acceptor::Outcome::kRefused:
      limitLog_.outOfDescriptors(channels_->size(), now);
      break;
  }
  return nullptr;
}

omni::giopConnection* Listener::admit(int socket, Time now) {
  if (channels_->size() >= limits_.connections) {
    ::close(socket);
    limitLog_.tooManyConnections(limits_.connections, now);
    return nullptr;
  }
  std::pair<Watcher::Id, std::shared_ptr<Channel>> added;
  try {
    added = channels_->add(socket);
  } catch (const std::bad_alloc&) {
    ::close(socket);
    limitLog_.outOfMemory(now);
    return nullptr;
  }
  const auto release = [channels = channels_, id = added.first] { channels->remove(id); };
  try {
    auto* const connection = new Connection(added.second, release);
    channels_->connect(added.first, connection);
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
  const Channel::State state = entry.channel->attend(scratch_.data(), scratch_.size(), now);
  if (state == Channel::State::kReady) {
    if (const auto refused = entry.channel->refusedRequest()) {
      limitLog_.requestTooLarge(refused->operation, refused->bytes,
                                peerEndpoint(entry.channel->socket()).host, now);
    }
    notify(cookie, entry.connection);
    entry.channel->finishNotification();
  } else if (state == Channel::State::kStarved) {
    starved_.push_back(id);
  }
  scheduleExpiry(entry.channel->incompleteSince());
}

void Listener::scheduleExpiry(std::optional<Time> incompleteSince) {
  if (incompleteSince && limits_.requestTime.count() > 0) {
    const Time expiry = *incompleteSince + limits_.requestTime;
    nextExpiry_ = nextExpiry_ ? std::min(*nextExpiry_, expiry) : expiry;
  }
}

// Shuts down the connections whose request exceeds the request time.
void Listener::expire(Time now) {
  nextExpiry_.reset();
  for (const auto& [id, entry] : channels_->all()) {
    const std::optional<Time> since = entry.channel->incompleteSince();
    if (since && *since + limits_.requestTime <= now) {
      limitLog_.requestIncomplete(now);
      entry.channel->shutDown();
    } else {
      scheduleExpiry(since);
    }
  }
}

void Listener::runTimers(Time now) {
  if (resumeAccept_ && *resumeAccept_ <= now) {
    resumeAccept_.reset();
    channels_->listen(true);
  }
  if (nextExpiry_ && *nextExpiry_ <= now) {
    expire(now);
  }
  limitLog_.endEpisodes(now);
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
