#include "client/output/OutputStream.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "client/base/Failure.h"

namespace topoctl {

DescriptorBuffer::DescriptorBuffer(int descriptor) : descriptor_(descriptor) {
  setp(buffer_.data(), buffer_.data() + buffer_.size());
}

DescriptorBuffer::int_type DescriptorBuffer::overflow(int_type c) {
  writeBuffered();
  if (!traits_type::eq_int_type(c, traits_type::eof())) {
    sputc(traits_type::to_char_type(c));
  }
  return traits_type::not_eof(c);
}

int DescriptorBuffer::sync() {
  writeBuffered();
  return 0;
}

void DescriptorBuffer::writeBuffered() {
  const char* next = pbase();
  const char* const end = pptr();
  setp(buffer_.data(), buffer_.data() + buffer_.size());
  while (next < end) {
    const ssize_t written = write(descriptor_, next, static_cast<std::size_t>(end - next));
    if (written < 0 && errno == EPIPE) {
      throw Failure(ExitCode::kOutputClosed, "the reader of the output has closed it");
    }
    if (written < 0 && errno != EINTR) {
      throw Failure(ExitCode::kLocal,
                    std::string("the output cannot be written: ") + std::strerror(errno));
    }
    next += written > 0 ? written : 0;
  }
}

OutputStream::OutputStream(int descriptor) : std::ostream(nullptr), buffer_(descriptor) {
  rdbuf(&buffer_);
  exceptions(std::ios::badbit);  // passes the exceptions of the buffer
}

void flush(std::ostream& out) {
  out << std::flush;
  if (!out) {
    throw Failure(ExitCode::kLocal, "the output cannot be written");
  }
}

void occupyStandardDescriptors() {
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(descriptor, F_GETFD) < 0) {
      // open() returns the lowest free descriptor, which is `descriptor`: all lower descriptors are
      // open.
      open("/dev/null", descriptor == STDOUT_FILENO ? O_RDONLY : O_RDWR);
    }
  }
}

}  // namespace topoctl
