#include "stream.h"

#include <sys/socket.h>

#include <utility>

namespace orb {

Stream::Stream(Descriptor socket, Peer peer) : socket_(std::move(socket)), peer_(std::move(peer)) {}

ssize_t Stream::receive(char* to, std::size_t count) {
  return ::recv(socket(), to, count, MSG_DONTWAIT);
}

ssize_t Stream::send(const void* bytes, std::size_t count) {
  return ::send(socket(), bytes, count, MSG_DONTWAIT | MSG_NOSIGNAL);
}

void Stream::shutDown() {
  ::shutdown(socket(), SHUT_RDWR);
}

}  // namespace orb
