// A new, empty directory. The destructor removes the directory and its content.

#ifndef TESTS_SUPPORT_TEMPORARYDIRECTORY_H
#define TESTS_SUPPORT_TEMPORARYDIRECTORY_H

#include <filesystem>
#include <string>

namespace support {

// Thread-safety: any thread. Owns the directory. Errors: the constructor throws
// std::runtime_error.
class TemporaryDirectory {
 public:
  TemporaryDirectory();
  ~TemporaryDirectory();

  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

  const std::filesystem::path& path() const { return path_; }

  // The path of a file in the directory; the file need not exist.
  std::string file(const std::string& name) const { return path_ / name; }

  // Writes a file, replacing an earlier content, and returns its path.
  std::string write(const std::string& name, const std::string& content) const;

 private:
  std::filesystem::path path_;
};

// The content of a file. Throws std::runtime_error when the file cannot be read.
std::string readFile(const std::filesystem::path& path);

}  // namespace support

#endif
