#include "requeststream.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <new>
#include <utility>

namespace orb {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

// Returns the milliseconds until the time, for poll(); -1 without a value.
int millisecondsUntil(std::optional<Clock::time_point> until) {
  if (!until) {
    return -1;
  }
  const auto left = std::chrono::ceil<milliseconds>(*until - Clock::now());
  return static_cast<int>(std::clamp<milliseconds::rep>(left.count(), 0, 1 << 30));
}

std::optional<Clock::time_point> after(Clock::time_point begin, milliseconds time) {
  return time.count() == 0 ? std::nullopt : std::optional(begin + time);
}

}  // namespace

RequestStream::RequestStream(std::shared_ptr<Connections> connections)
    : connections_(std::move(connections)),
      assembler_(connections_->limits(), connections_->budget()) {}

RequestStream::~RequestStream() {
  if (connection_) {
    connections_->remove(connection_);
  }
}

bool RequestStream::admit(int socket) {
  try {
    connection_ = connections_->admit(socket);
    if (connection_ && connection_->peer().transport == Transport::kTls) {
      ::fcntl(socket, F_SETFL, ::fcntl(socket, F_GETFL) | O_NONBLOCK);
      session_ = std::make_unique<TlsSession>(socket, *connections_->tls());
      handshakeUntil_ = Clock::now() + handshakeTime(connections_->options());
    }
    return connection_ != nullptr;
  } catch (const std::bad_alloc&) {
    connections_->logNoMemory();
    return false;
  }
}

ssize_t RequestStream::recv(char* to, std::size_t count) {
  replyBegun_.reset();
  std::size_t taken = request_ ? request_->bytes.take(to, count) : 0;
  if (taken == 0 && receiveRequest()) {
    taken = request_->bytes.take(to, count);
  }
  if (taken > 0) {
    return static_cast<ssize_t>(taken);
  }
  if (session_) {
    session_->end();
  }
  errno = ECONNRESET;  // after ETIME the ORB would retry
  return -1;
}

ssize_t RequestStream::send(iovec* pieces, int count, std::size_t& sent) {
  if (!replyBegun_) {
    replyBegun_ = Clock::now();
  }
  for (;;) {
    const ssize_t written = write(pieces, count);
    if (written >= 0) {
      sent = static_cast<std::size_t>(written);
      return written;
    }
    if (errno != EINTR && (errno != EAGAIN || !awaitWritable())) {
      connection_->reset();
      errno = ECONNRESET;
      return -1;
    }
  }
}

// Sends one piece of a TLS connection; the ORB sends the rest with the next call.
ssize_t RequestStream::write(iovec* pieces, int count) {
  if (session_) {
    const iovec* const first =
        std::find_if(pieces, pieces + count, [](const iovec& each) { return each.iov_len > 0; });
    return first == pieces + count ? 0 : session_->send(first->iov_base, first->iov_len);
  }
  msghdr message{};
  message.msg_iov = pieces;
  message.msg_iovlen = static_cast<std::size_t>(count);
  return ::sendmsg(connection_->socket(), &message, MSG_DONTWAIT | MSG_NOSIGNAL);
}

// Polls isDraining(), because drain may begin while the thread waits.
bool RequestStream::awaitWritable() const {
  constexpr milliseconds kPollInterval{100};
  const auto isLate = [](std::optional<Clock::time_point> until) {
    return until && *until <= Clock::now();
  };
  while (!isLate(after(*replyBegun_, connections_->options().serveTimeout))) {
    if (awaitSocket(POLLOUT, Clock::now() + kPollInterval)) {
      return true;
    }
    if (connection_->isDraining() && isLate(*replyBegun_ + connections_->options().drainGrace)) {
      connections_->logUnread(*connection_);
      return false;
    }
  }
  return false;
}

// Waits for the next complete request. Returns false at the end of the connection and after a
// failed allocation.
bool RequestStream::receiveRequest() {
  try {
    return assembleRequest();
  } catch (const std::bad_alloc&) {
    return false;
  }
}

bool RequestStream::assembleRequest() {
  request_.reset();
  idleUntil_ = after(Clock::now(), connections_->options().idleTimeout);
  while (!connections_->isClosing()) {
    const Assembler::Progress taken =
        assembler_.take(buffer_.data() + begin_, end_ - begin_, Clock::now());
    begin_ += taken.bytes;
    if (assembler_.isComplete()) {
      request_ = assembler_.release();
      recordRequest();
      return true;
    }
    if (!taken.valid || !(taken.starved ? awaitBudget() : receiveBytes())) {
      return false;
    }
  }
  return false;
}

void RequestStream::recordRequest() {
  servedRequest() = {connection_, request_->declaredBytes, request_->refused.has_value()};
  if (request_->refused) {
    connections_->logTooLarge(*connection_, *request_);
  }
}

// Receives the available bytes, or waits for the first byte.
bool RequestStream::receiveBytes() {
  if (!(session_ && session_->hasReceived()) && !awaitSocket(POLLIN, deadline())) {
    return timedOut();
  }
  const ssize_t count = receiveSome();
  const bool again = count < 0 && (errno == EAGAIN || errno == EINTR);
  begin_ = 0;
  end_ = count > 0 ? static_cast<std::size_t>(count) : 0;
  return count > 0 || again;
}

ssize_t RequestStream::receiveSome() {
  if (!session_) {
    return ::recv(connection_->socket(), buffer_.data(), buffer_.size(), MSG_DONTWAIT);
  }
  const bool before = shakesHands();
  const ssize_t count = session_->receive(buffer_.data(), buffer_.size());
  const int error = errno;
  if (before) {
    observeHandshake();
  }
  errno = error;
  return count;
}

void RequestStream::observeHandshake() {
  const std::string failure = session_->takeFailure();
  if (!failure.empty()) {
    connections_->logHandshake(*connection_, failure);
  } else if (session_->isOpen()) {
    connection_->setSubject(session_->subject());
  }
}

// Pauses until other connections may have released receive memory.
bool RequestStream::awaitBudget() {
  constexpr int kPauseMilliseconds = 20;
  ::poll(nullptr, 0, kPauseMilliseconds);
  return millisecondsUntil(deadline()) != 0 || timedOut();
}

// Logs an incomplete handshake or request. Returns false, for the end of the connection.
bool RequestStream::timedOut() const {
  if (shakesHands()) {
    if (!session_->hasFailed()) {
      connections_->logHandshake(*connection_, "it was not complete in time");
    }
  } else if (assembler_.incompleteSince()) {
    connections_->logIncomplete();
  }
  return false;
}

std::optional<Clock::time_point> RequestStream::deadline() const {
  if (shakesHands()) {
    return handshakeUntil_;
  }
  const std::optional<Assembler::Time> since = assembler_.incompleteSince();
  return since ? after(*since, connections_->options().serveTimeout) : idleUntil_;
}

// Whether the socket became ready, or failed, before `until`.
bool RequestStream::awaitSocket(short event, std::optional<Clock::time_point> until) const {
  pollfd wait{connection_->socket(), event, 0};
  int ready = 0;
  do {
    ready = ::poll(&wait, 1, millisecondsUntil(until));
  } while ((ready < 0 && errno == EINTR) || (ready == 0 && millisecondsUntil(until) != 0));
  return ready > 0;
}

}  // namespace orb
