// A directory of a test's own, removed with everything in it at the end of the scope.

#ifndef TESTS_SUPPORT_TEMPORARYDIRECTORY_H
#define TESTS_SUPPORT_TEMPORARYDIRECTORY_H

#include <filesystem>
#include <string>

namespace support {

class TemporaryDirectory {
 public:
  TemporaryDirectory();
  ~TemporaryDirectory();

  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

  const std::filesystem::path& path() const { return path_; }

  // Where a file of that name is or would be.
  std::string file(const std::string& name) const { return path_ / name; }

  // Makes a file with a content and returns its path.
  std::string write(const std::string& name, const std::string& content) const;

 private:
  std::filesystem::path path_;
};

// The whole content of a file; fails the caller with an exception when it cannot be read.
std::string readFile(const std::filesystem::path& path);

}  // namespace support

#endif
