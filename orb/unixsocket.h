// Listening on a Unix socket.

#ifndef ORB_UNIXSOCKET_H
#define ORB_UNIXSOCKET_H

#include <sys/types.h>

#include <string>

namespace orb {

// Binds a socket to the path and listens. The umask sets the rights of the new file. The rights
// of the folder decide which users can connect. A socket file on which no process listens is
// replaced; every other file is kept. Returns the socket, owned by the caller.
// Throws EndpointError, whose text is the reason without the path.
int listenOnUnixSocket(const std::string& path);

// Removes the file of a listening Unix socket at the end, unless another file has its path now.
//
// Thread-safety: none. Owns the path. No function fails.
class SocketFile {
 public:
  // REQUIRES: listenOnUnixSocket(path) has made the file.
  explicit SocketFile(std::string path);
  ~SocketFile();
  SocketFile(const SocketFile&) = delete;
  SocketFile& operator=(const SocketFile&) = delete;

 private:
  const std::string path_;
  dev_t device_ = 0;
  ino_t inode_ = 0;
};

}  // namespace orb

#endif
