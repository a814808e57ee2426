#include "agent/process/AppendedFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

#include "agent/process/ReadFile.h"

namespace agent {
namespace {

std::string reasonOf(int error) {
  return std::generic_category().message(error);
}

// Without O_NONBLOCK, the system call would wait for the reader of a pipe.
int openForAppending(const std::filesystem::path& file) {
  constexpr int kFlags = O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NONBLOCK;
  constexpr mode_t kMode = 0640;
  const int descriptor = ::open(file.c_str(), kFlags, kMode);
  if (descriptor < 0) {
    throw FileError(file.string() + ": " + reasonOf(errno));
  }
  struct stat status {};
  if (::fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
    ::close(descriptor);
    throw FileError(file.string() + ": is not a regular file");
  }
  return descriptor;
}

}  // namespace

AppendedFile::AppendedFile(std::filesystem::path file)
    : file_(std::move(file)), descriptor_(openForAppending(file_)) {}

AppendedFile::~AppendedFile() {
  ::close(descriptor_);
}

std::string AppendedFile::append(std::string_view line) {
  std::string text = isPartial_ ? "\n" : "";
  text.append(line).append("\n");
  std::string_view rest = text;
  while (!rest.empty()) {
    const ssize_t written = ::write(descriptor_, rest.data(), rest.size());
    if (written < 0 && errno == EINTR) {
      continue;
    }
    if (written <= 0) {
      isPartial_ = isPartial_ || rest.size() < text.size();
      return reasonOf(written < 0 ? errno : ENOSPC);
    }
    rest.remove_prefix(static_cast<std::size_t>(written));
  }
  isPartial_ = false;
  return "";
}

std::string AppendedFile::reopen() {
  try {
    ::close(std::exchange(descriptor_, openForAppending(file_)));
    isPartial_ = false;
    return "";
  } catch (const FileError& failure) {
    return failure.what();
  }
}

}  // namespace agent
