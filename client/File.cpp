#include "client/File.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <system_error>

namespace topoctl {
namespace {

constexpr std::size_t kPart = std::size_t{64} * 1024;

[[noreturn]] void fail() {
  throw std::system_error(errno, std::generic_category());
}

}  // namespace

std::string readFile(const std::string& path, std::size_t limit) {
  using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;
  const File file(std::fopen(path.c_str(), "rb"), std::fclose);
  if (file == nullptr) {
    fail();
  }
  std::string content;
  std::size_t got = 1;
  while (got > 0 && content.size() <= limit) {
    const std::size_t before = content.size();
    content.resize(before + std::min(kPart, limit + 1 - before));
    got = std::fread(&content[before], 1, content.size() - before, file.get());
    content.resize(before + got);
  }
  if (std::ferror(file.get()) != 0) {
    fail();
  }
  return content;
}

}  // namespace topoctl
