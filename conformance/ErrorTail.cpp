#include "conformance/ErrorTail.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>

#include <array>
#include <cerrno>
#include <sstream>
#include <system_error>

namespace conformance {
namespace {

constexpr std::size_t kLongestTail = 64 << 10;

// More than a pipe contains: bounds the work for a process that writes without pause.
constexpr int kMostReads = 64;

}  // namespace

ErrorTail::ErrorTail()
    : pipe_("a pipe for the standard error of the host"), stop_(eventfd(0, EFD_CLOEXEC)) {
  if (stop_.get() < 0 || fcntl(pipe_.read.get(), F_SETFL, O_NONBLOCK) != 0) {
    throw std::system_error(errno, std::generic_category(),
                            "the reader of the standard error of the host");
  }
  thread_ = std::thread([this] { run(); });
}

ErrorTail::~ErrorTail() {
  eventfd_write(stop_.get(), 1);
  thread_.join();
}

void ErrorTail::run() {
  for (;;) {
    std::array<pollfd, 2> entries = {{{pipe_.read.get(), POLLIN, 0}, {stop_.get(), POLLIN, 0}}};
    if (poll(entries.data(), entries.size(), -1) < 0 && errno != EINTR) {
      return;
    }
    if (entries[1].revents != 0) {
      return;
    }
    const std::lock_guard<std::mutex> lock(mutex_);
    const bool isOver = !readOnce() && (entries[0].revents & (POLLHUP | POLLIN)) == POLLHUP;
    if (isOver) {
      return;
    }
  }
}

bool ErrorTail::readOnce() {
  std::array<char, 16384> part;
  const ssize_t count = read(pipe_.read.get(), part.data(), part.size());
  if (count <= 0) {
    return false;
  }
  tail_.append(part.data(), static_cast<std::size_t>(count));
  if (tail_.size() > kLongestTail) {
    tail_.erase(0, tail_.size() - kLongestTail);
  }
  return true;
}

std::string ErrorTail::reason() {
  const std::lock_guard<std::mutex> lock(mutex_);
  for (int i = 0; i < kMostReads && readOnce(); ++i) {
  }
  std::string last;
  std::string symbol;
  std::istringstream lines(tail_);
  for (std::string line; std::getline(lines, line);) {
    last = line.empty() ? last : line;
    symbol = line.find("undefined symbol") != std::string::npos ? line : symbol;
  }
  return symbol.empty() ? last : symbol;
}

}  // namespace conformance
