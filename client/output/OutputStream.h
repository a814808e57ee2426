// A stream onto a file descriptor that reports what the operating system says of a failed write.

#ifndef CLIENT_OUTPUT_OUTPUTSTREAM_H
#define CLIENT_OUTPUT_OUTPUTSTREAM_H

#include <array>
#include <ostream>
#include <streambuf>

namespace topoctl {

// Throws Failure (kLocal) when a write fails; what is buffered then is lost.
class DescriptorBuffer final : public std::streambuf {
 public:
  explicit DescriptorBuffer(int descriptor);  // borrowed

 protected:
  int_type overflow(int_type c) override;
  int sync() override;

 private:
  void writeBuffered();

  const int descriptor_;
  std::array<char, 65536> buffer_;
};

// Its failures are those of the buffer. Does not flush when it ends.
class Output final : public std::ostream {
 public:
  explicit Output(int descriptor);  // borrowed

 private:
  DescriptorBuffer buffer_;
};

// Throws Failure (kLocal) when what was written did not get out.
void flush(std::ostream& out);

// Puts /dev/null where standard input, output or error is closed, so that no connection gets a
// descriptor that output is written to. Writing to such an output fails as it does on a closed one.
void occupyStandardDescriptors();

}  // namespace topoctl

#endif
