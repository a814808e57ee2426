#include "client/base/File.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <system_error>
#include <utility>

#include "client/base/Failure.h"

namespace topoctl {
namespace {

constexpr std::size_t kPart = std::size_t{64} * 1024;

[[noreturn]] void fail() {
  throw std::system_error(errno, std::generic_category());
}

[[noreturn]] void failToWrite(const std::string& path, ExitCode code, int error) {
  throw Failure(
      code, "the file '" + path + "' cannot be written: " + std::generic_category().message(error));
}

// A network file system without RENAME_NOREPLACE reports EINVAL. There rename() replaces a file
// that has been created in the meantime.
bool nameNewFile(const std::string& draft, const std::string& path) {
  if (::renameat2(AT_FDCWD, draft.c_str(), AT_FDCWD, path.c_str(), RENAME_NOREPLACE) == 0) {
    return true;
  }
  return errno == EINVAL && ::rename(draft.c_str(), path.c_str()) == 0;
}

}  // namespace

NewFile::NewFile(std::string path) : path_(std::move(path)), draft_(path_ + ".part") {
  struct stat status {};
  if (::lstat(path_.c_str(), &status) == 0) {
    failToWrite(path_, ExitCode::kUsage, EEXIST);
  }
  file_ = ::open(draft_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                 S_IRUSR | S_IWUSR);
  if (file_ < 0) {
    failToWrite(draft_, ExitCode::kUsage, errno);
  }
}

NewFile::~NewFile() {
  if (file_ >= 0) {
    ::close(file_);
    ::unlink(draft_.c_str());
  }
}

void NewFile::write(const void* bytes, std::size_t count) {
  const auto* next = static_cast<const char*>(bytes);
  while (count > 0) {
    const ssize_t written = ::write(file_, next, count);
    if (written < 0 && errno != EINTR) {
      failToWrite(draft_, ExitCode::kLocal, errno);
    }
    const std::size_t done = written < 0 ? 0 : static_cast<std::size_t>(written);
    next += done;
    count -= done;
  }
}

void NewFile::finish() {
  if (::fsync(file_) != 0) {
    failToWrite(draft_, ExitCode::kLocal, errno);
  }
  if (!nameNewFile(draft_, path_)) {
    failToWrite(path_, ExitCode::kLocal, errno);
  }
  ::close(std::exchange(file_, -1));
}

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
