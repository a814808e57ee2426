#include "unixsocket.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <system_error>
#include <utility>

#include "descriptor.h"
#include "orb/orb.h"

namespace orb {
namespace {

[[noreturn]] void throwError(const std::string& what, int error) {
  throw EndpointError(what + std::generic_category().message(error));
}

sockaddr_un addressOf(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.size() >= sizeof address.sun_path) {
    throw EndpointError("the path is longer than " + std::to_string(sizeof address.sun_path - 1) +
                        " characters");
  }
  std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
  return address;
}

int newSocket() {
  const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  if (socket < 0) {
    throwError("", errno);
  }
  return socket;
}

bool bindTo(const Descriptor& socket, const sockaddr_un& address) {
  return ::bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

// Throws EndpointError unless the file is a socket on which no process listens.
void checkUnused(const std::string& path, const sockaddr_un& address) {
  struct stat file {};
  if (::lstat(path.c_str(), &file) != 0) {
    throwError("", errno);
  }
  if (!S_ISSOCK(file.st_mode)) {
    throw EndpointError("the file exists and is no socket");
  }
  const Descriptor probe(newSocket());
  if (::connect(probe.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 ||
      errno == EAGAIN) {
    throw EndpointError("another process listens there");
  }
  if (errno != ECONNREFUSED) {
    throwError("the file exists: ", errno);
  }
}

std::string folderOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string::npos ? "." : path.substr(0, slash + 1);
}

}  // namespace

int listenOnUnixSocket(const std::string& path) {
  const sockaddr_un address = addressOf(path);
  Descriptor socket(newSocket());
  // The lock prevents that two starting processes replace each other's socket.
  const Descriptor folder(::open(folderOf(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (folder.get() < 0 || ::flock(folder.get(), LOCK_EX) != 0) {
    throwError("its folder: ", errno);
  }
  if (!bindTo(socket, address)) {
    if (errno != EADDRINUSE) {
      throwError("", errno);
    }
    checkUnused(path, address);
    if (::unlink(path.c_str()) != 0 || !bindTo(socket, address)) {
      throwError("the unused socket cannot be replaced: ", errno);
    }
  }
  if (::listen(socket.get(), SOMAXCONN) != 0) {
    throwError("", errno);
  }
  return socket.release();
}

SocketFile::SocketFile(std::string path) : path_(std::move(path)) {
  struct stat file {};
  if (::lstat(path_.c_str(), &file) == 0) {
    device_ = file.st_dev;
    inode_ = file.st_ino;
  }
}

SocketFile::~SocketFile() {
  struct stat file {};
  if (::lstat(path_.c_str(), &file) == 0 && file.st_dev == device_ && file.st_ino == inode_) {
    static_cast<void>(::unlink(path_.c_str()));
  }
}

}  // namespace orb
