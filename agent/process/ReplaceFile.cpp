#include "agent/process/ReplaceFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <random>
#include <sstream>
#include <system_error>

#include "agent/process/WriteWithin.h"

namespace agent {
namespace {

[[noreturn]] void raise() {
  throw std::system_error(errno, std::generic_category());
}

void require(bool done) {
  if (!done) {
    raise();
  }
}

class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) { require(number >= 0); }
  ~Descriptor() { ::close(number_); }

  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  int get() const { return number_; }

 private:
  const int number_;
};

std::string randomDigits() {
  std::random_device random;
  std::ostringstream digits;
  digits << std::hex << random() << random();
  return digits.str();
}

// The new file, beside the file at `path`. The destructor removes a draft that was not renamed.
class Draft {
 public:
  explicit Draft(const std::filesystem::path& path)
      : name_(path.string() + "." + randomDigits()),
        file_(::open(name_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0644)) {}

  ~Draft() {
    if (!renamed_) {
      ::unlink(name_.c_str());
    }
  }

  Draft(const Draft&) = delete;
  Draft& operator=(const Draft&) = delete;

  void write(const std::string& content) {
    require(writeWithin(file_.get(), content, kNoLimit));
    require(::fsync(file_.get()) == 0);
  }

  void rename(const std::filesystem::path& path) {
    require(::rename(name_.c_str(), path.c_str()) == 0);
    renamed_ = true;
  }

 private:
  const std::string name_;
  const Descriptor file_;
  bool renamed_ = false;
};

// Writes the names in a folder to disk. EINVAL: the file system cannot sync folders.
void syncFolder(const std::filesystem::path& folder) {
  const Descriptor descriptor(
      ::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  require(::fsync(descriptor.get()) == 0 || errno == EINVAL);
}

// Whether the path, with links followed, is a device, a pipe or a socket. A rename to such a path
// would remove it from the system: with /dev/null, every program would suffer.
bool isSpecialFile(const std::filesystem::path& path) {
  std::error_code ignored;
  return std::filesystem::is_other(std::filesystem::status(path, ignored));
}

}  // namespace

void replaceFile(const std::string& kind, const std::filesystem::path& path,
                 const std::string& content) {
  const std::string prefix = kind + " " + path.string() + ": cannot be written: ";
  if (isSpecialFile(path)) {
    throw FileError(prefix + "it is not a regular file");
  }
  try {
    Draft draft(path);
    draft.write(content);
    draft.rename(path);
    syncFolder(path.parent_path());
  } catch (const std::system_error& failure) {
    throw FileError(prefix + failure.code().message());
  }
}

}  // namespace agent
