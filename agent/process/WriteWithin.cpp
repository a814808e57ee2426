#include "agent/process/WriteWithin.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>

namespace agent {
namespace {

bool isWritable(int descriptor, std::chrono::milliseconds patience) {
  pollfd waited{descriptor, POLLOUT, 0};
  int ready = -1;
  do {
    ready = ::poll(&waited, 1, static_cast<int>(patience.count()));
  } while (ready < 0 && errno == EINTR);
  return ready > 0;
}

}  // namespace

bool writeWithin(int descriptor, std::string_view text, std::chrono::milliseconds patience) {
  while (!text.empty()) {
    if (!isWritable(descriptor, patience)) {
      return false;
    }
    const ssize_t written = ::write(descriptor, text.data(), text.size());
    if (written < 0 && errno != EINTR && errno != EAGAIN) {
      return false;
    }
    text.remove_prefix(written < 0 ? 0 : static_cast<std::size_t>(written));
  }
  return true;
}

}  // namespace agent
