// The socket of a service manager, on which a service reports its state.

#ifndef TESTS_SUPPORT_NOTIFYSOCKET_H
#define TESTS_SUPPORT_NOTIFYSOCKET_H

#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <stdexcept>
#include <string>

#include "tests/support/TemporaryDirectory.h"

namespace support {

// The name is the value of NOTIFY_SOCKET. Thread-safety: one thread. Owns descriptor and folder.
// Errors: the constructor throws std::runtime_error.
class NotifySocket {
 public:
  NotifySocket() {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path().c_str(), sizeof address.sun_path - 1);
    const timeval patience{60, 0};
    setsockopt(descriptor_, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    if (bind(descriptor_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
      throw std::runtime_error("no socket at " + path());
    }
  }
  ~NotifySocket() { close(descriptor_); }

  NotifySocket(const NotifySocket&) = delete;
  NotifySocket& operator=(const NotifySocket&) = delete;

  std::string path() const { return directory_.file("notify"); }

  // The next message; "" after a minute without a message.
  std::string next() { return receive(0); }

  // The next message that has arrived already; "" without one.
  std::string arrived() { return receive(MSG_DONTWAIT); }

 private:
  std::string receive(int flags) {
    char buffer[4096];
    const ssize_t size = recv(descriptor_, buffer, sizeof buffer, flags);
    return size > 0 ? std::string(buffer, static_cast<std::size_t>(size)) : "";
  }

  const TemporaryDirectory directory_;
  const int descriptor_ = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
};

}  // namespace support

#endif
