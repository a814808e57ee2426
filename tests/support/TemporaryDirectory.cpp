#include "tests/support/TemporaryDirectory.h"

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <system_error>

namespace support {

TemporaryDirectory::TemporaryDirectory() {
  std::string name = std::filesystem::temp_directory_path() / "topo-test-XXXXXX";
  if (mkdtemp(name.data()) == nullptr) {
    throw std::runtime_error("no temporary directory");
  }
  path_ = name;
}

TemporaryDirectory::~TemporaryDirectory() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

std::string TemporaryDirectory::write(const std::string& name, const std::string& content) const {
  const std::string path = file(name);
  std::ofstream(path, std::ios::binary) << content;
  return path;
}

std::string readFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream content;
  content << file.rdbuf();
  if (!file) {
    throw std::runtime_error("cannot read " + path.string());
  }
  return content.str();
}

}  // namespace support
