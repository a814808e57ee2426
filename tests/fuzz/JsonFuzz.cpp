// Network files in the native format, and content of neither format.

#include <cstddef>
#include <cstdint>

#include "tests/fuzz/NetworkFile.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::readAndModel({reinterpret_cast<const char*>(data), size}, std::nullopt);
  return 0;
}
