// Standard output as a stream that reports a failed write with the error of the operating system.

#ifndef CLIENT_OUTPUT_OUTPUTSTREAM_H
#define CLIENT_OUTPUT_OUTPUTSTREAM_H

#include <array>
#include <ostream>
#include <streambuf>

namespace topoctl {

// Buffers output to a file descriptor. When a write fails, discards the buffered output and throws
// Failure: kOutputClosed when the reader of a pipe has ended, otherwise kLocal. Thread-safety:
// none. Borrows the descriptor.
class DescriptorBuffer final : public std::streambuf {
 public:
  explicit DescriptorBuffer(int descriptor);

 protected:
  int_type overflow(int_type c) override;
  int sync() override;

 private:
  void writeBuffered();

  const int descriptor_;
  std::array<char, 65536> buffer_;
};

// A stream on a DescriptorBuffer, whose Failures pass. The destructor does not flush.
// Thread-safety: none. Borrows the descriptor.
class OutputStream final : public std::ostream {
 public:
  explicit OutputStream(int descriptor);

 private:
  DescriptorBuffer buffer_;
};

// Flushes the stream. Throws Failure (kLocal) when this or an earlier write failed.
void flush(std::ostream& out);

// Opens /dev/null in place of a closed standard input, output or error, so that no connection gets
// the descriptor of a standard stream. Writing to such an output fails as on a closed descriptor.
// REQUIRES: no other thread runs.
void occupyStandardDescriptors();

}  // namespace topoctl

#endif
