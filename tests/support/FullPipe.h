// A full pipe without a reader.

#ifndef TESTS_SUPPORT_FULLPIPE_H
#define TESTS_SUPPORT_FULLPIPE_H

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <stdexcept>
#include <string>

namespace support {

// Programs started during the life of the object inherit the write end. Thread-safety: none. Owns
// both ends. Throws std::runtime_error when there is no pipe.
class FullPipe {
 public:
  FullPipe() {
    if (::pipe(ends_.data()) != 0 || ::fcntl(ends_[0], F_SETFD, FD_CLOEXEC) != 0) {
      throw std::runtime_error("no pipe");
    }
    const int flags = ::fcntl(ends_[1], F_GETFL);
    ::fcntl(ends_[1], F_SETFL, flags | O_NONBLOCK);
    while (::write(ends_[1], "x", 1) == 1) {
    }
    ::fcntl(ends_[1], F_SETFL, flags);
  }
  ~FullPipe() {
    ::close(ends_[0]);
    ::close(ends_[1]);
  }

  FullPipe(const FullPipe&) = delete;
  FullPipe& operator=(const FullPipe&) = delete;

  int writer() const { return ends_[1]; }
  int reader() const { return ends_[0]; }

  // The path with which a program opens the inherited write end.
  std::string path() const { return "/proc/self/fd/" + std::to_string(ends_[1]); }

 private:
  std::array<int, 2> ends_{};
};

}  // namespace support

#endif
