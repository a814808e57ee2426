#include "agent/process/ReadFile.h"

#include <cerrno>
#include <fstream>
#include <system_error>

namespace agent {

std::string readFile(const std::filesystem::path& file, std::size_t mostBytes) {
  std::error_code status;
  if (std::filesystem::is_directory(file, status)) {
    throw FileError(file.string() + ": is a directory");
  }
  std::ifstream stream(file, std::ios::binary);
  if (!stream) {
    throw FileError(file.string() + ": " + std::generic_category().message(errno));
  }
  std::string text(mostBytes + 1, '\0');
  stream.read(text.data(), static_cast<std::streamsize>(text.size()));
  text.resize(static_cast<std::size_t>(stream.gcount()));
  if (stream.bad()) {
    throw FileError(file.string() + ": cannot be read");
  }
  if (text.size() > mostBytes) {
    throw FileError(file.string() + ": is larger than " + std::to_string(mostBytes >> 20) + " MiB");
  }
  return text;
}

}  // namespace agent
