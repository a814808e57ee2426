#include "tlssession.h"

#include <openssl/err.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <new>
#include <utility>

namespace orb {
namespace {

bool isWaiting(int error) {
  return error == SSL_ERROR_WANT_READ || error == SSL_ERROR_WANT_WRITE;
}

int limited(std::size_t count) {
  return static_cast<int>(std::min<std::size_t>(count, INT_MAX));
}

}  // namespace

TlsSession::TlsSession(int socket, const TlsContext& context)
    : socket_(socket), connection_(acceptingConnection(context)) {
  if (!connection_ || SSL_set_fd(connection_.get(), socket) != 1) {
    throw std::bad_alloc();
  }
}

ssize_t TlsSession::receive(char* to, std::size_t count) {
  if (failed_) {
    return dropBytes();
  }
  const MutexLock lock(mutex_);
  ERR_clear_error();
  if (!open_ && shakeHands() != Step::kDone) {
    errno = EAGAIN;
    return -1;
  }
  const int received = SSL_read(connection_.get(), to, limited(count));
  if (received > 0) {
    return received;
  }
  const int error = SSL_get_error(connection_.get(), received);
  if (error == SSL_ERROR_ZERO_RETURN) {
    return 0;
  }
  errno = isWaiting(error) ? EAGAIN : ECONNRESET;
  return -1;
}

TlsSession::Step TlsSession::shakeHands() {
  const int result = SSL_do_handshake(connection_.get());
  if (result == 1) {
    subject_ = verifiedSubject(*connection_);
    open_ = true;
    return Step::kDone;
  }
  if (isWaiting(SSL_get_error(connection_.get(), result))) {
    return Step::kWaiting;
  }
  failure_ = handshakeFailure(*connection_);
  failed_ = true;
  ::shutdown(socket_, SHUT_WR);
  return Step::kFailed;
}

// A close() with unread bytes would send a reset, which can overtake the alert.
ssize_t TlsSession::dropBytes() const {
  char dropped[1024];
  const ssize_t count = ::recv(socket_, dropped, sizeof dropped, MSG_DONTWAIT);
  if (count <= 0) {
    return count;
  }
  errno = EAGAIN;
  return -1;
}

ssize_t TlsSession::send(const void* bytes, std::size_t count) {
  const MutexLock lock(mutex_);
  if (!open_) {
    errno = EPIPE;
    return -1;
  }
  ERR_clear_error();
  const int sent = SSL_write(connection_.get(), bytes, limited(count));
  if (sent > 0) {
    return sent;
  }
  errno = isWaiting(SSL_get_error(connection_.get(), sent)) ? EAGAIN : ECONNRESET;
  return -1;
}

bool TlsSession::hasReceived() const {
  const MutexLock lock(mutex_);
  return SSL_pending(connection_.get()) > 0;
}

std::string TlsSession::takeFailure() {
  const MutexLock lock(mutex_);
  return std::exchange(failure_, {});
}

void TlsSession::end() {
  const MutexLock lock(mutex_);
  if (open_) {
    ERR_clear_error();
    SSL_shutdown(connection_.get());
  }
}

}  // namespace orb
