// Network files in GraphML, with the numbers of the file and with numbers from an importer.

#include <cstddef>
#include <cstdint>

#include "tests/fuzz/NetworkFile.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view content(reinterpret_cast<const char*>(data), size);
  if (content.find('<') == std::string_view::npos) {
    return -1;  // the corpus has no use for the input
  }
  fuzz::readAndModel(content, std::nullopt);
  fuzz::readAndModel(content, agent::GraphmlNumbering{1000});
  return 0;
}
