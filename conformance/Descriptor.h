// File descriptors with an owner.

#ifndef CONFORMANCE_DESCRIPTOR_H
#define CONFORMANCE_DESCRIPTOR_H

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>
#include <utility>

namespace conformance {

// Owns a file descriptor and closes it in the destructor. -1 is no descriptor. Thread-safety: none.
// Never fails.
class Descriptor {
 public:
  explicit Descriptor(int value = -1) : value_(value) {}
  ~Descriptor() { reset(); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  int get() const { return value_; }

  int release() { return std::exchange(value_, -1); }

  void reset(int value = -1) {
    if (value_ >= 0) {
      close(value_);
    }
    value_ = value;
  }

 private:
  int value_;
};

// The two ends of a pipe that a program does not inherit.
//
// Thread-safety: none. Errors: the constructor throws std::system_error; `what` names the pipe.
struct Pipe {
  explicit Pipe(const char* what) {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
      throw std::system_error(errno, std::generic_category(), what);
    }
    read.reset(ends[0]);
    write.reset(ends[1]);
  }

  Descriptor read;
  Descriptor write;
};

}  // namespace conformance

#endif
