#include "acceptor.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace orb {
namespace {

int openReserve() {
  return ::open("/dev/null", O_RDONLY | O_CLOEXEC);
}

bool isOutOfResources(int error) {
  return error == EMFILE || error == ENFILE || error == ENOBUFS || error == ENOMEM;
}

}  // namespace

Acceptor::Acceptor(int socket) : socket_(socket), reserve_(openReserve()) {}

Acceptor::~Acceptor() {
  ::close(socket_);
  if (reserve_ >= 0) {
    ::close(reserve_);
  }
}

Acceptor::Outcome Acceptor::accept(int& accepted) {
  if (reserve_ < 0) {
    reserve_ = openReserve();
  }
  accepted = ::accept4(socket_, nullptr, nullptr, SOCK_CLOEXEC);
  if (accepted >= 0) {
    return Outcome::kAccepted;
  }
  // All other errors mean that the client has closed the connection.
  return isOutOfResources(errno) ? refuseConnection() : Outcome::kNone;
}

Acceptor::Outcome Acceptor::refuseConnection() {
  if (reserve_ < 0) {
    return Outcome::kFailed;
  }
  ::close(std::exchange(reserve_, -1));
  const int unwanted = ::accept4(socket_, nullptr, nullptr, SOCK_CLOEXEC);
  if (unwanted >= 0) {
    ::close(unwanted);
  }
  reserve_ = openReserve();
  return unwanted >= 0 ? Outcome::kRefused : Outcome::kFailed;
}

}  // namespace orb
