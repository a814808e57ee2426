// A socket in place of systemd's journal, in a mount namespace of the test.

#ifndef TESTS_SUPPORT_PRIVATEJOURNAL_H
#define TESTS_SUPPORT_PRIVATEJOURNAL_H

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <string>

#include "tests/support/ChildProcess.h"

namespace support {

inline bool writeWhole(const char* file, const std::string& text) {
  const int descriptor = open(file, O_WRONLY | O_CLOEXEC);
  const ssize_t written = write(descriptor, text.data(), text.size());
  close(descriptor);
  return written == static_cast<ssize_t>(text.size());
}

// Mounts an empty /run that no other process sees. Returns false if the system does not allow the
// mount. REQUIRES: the process has one thread.
inline bool hidesRun() {
  const std::string user = "0 " + std::to_string(getuid()) + " 1";
  const std::string group = "0 " + std::to_string(getgid()) + " 1";
  return unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0 && writeWhole("/proc/self/setgroups", "deny") &&
         writeWhole("/proc/self/uid_map", user) && writeWhole("/proc/self/gid_map", group) &&
         mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
         mount("tmpfs", "/run", "tmpfs", 0, nullptr) == 0;
}

// Runs the work, which contains expectations, in a child process with an empty /run. Skips the test
// if the system does not allow the mount.
inline void runWithoutJournal(const std::function<void()>& work) {
  constexpr int kSkipped = 77;
  const int status = statusOfChild([&work] {
    if (!hidesRun()) {
      _exit(kSkipped);
    }
    work();
    _exit(testing::Test::HasFailure() ? 1 : 0);
  });
  ASSERT_TRUE(WIFEXITED(status)) << status;
  if (WEXITSTATUS(status) == kSkipped) {
    GTEST_SKIP() << "the system does not allow namespaces";
  }
  EXPECT_EQ(0, WEXITSTATUS(status));
}

// The socket of the journal. REQUIRES: an empty /run. Thread-safety: one thread. Owns the
// descriptor.
class JournalSocket {
 public:
  JournalSocket() {
    const std::string path = "/run/systemd/journal/socket";
    std::filesystem::create_directories("/run/systemd/journal");
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    const timeval patience{60, 0};
    setsockopt(descriptor_, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    EXPECT_EQ(0, bind(descriptor_, reinterpret_cast<const sockaddr*>(&address), sizeof address));
  }
  ~JournalSocket() { close(descriptor_); }

  JournalSocket(const JournalSocket&) = delete;
  JournalSocket& operator=(const JournalSocket&) = delete;

  // The next entry, a field in each line; "" after a minute without an entry.
  std::string next() const {
    char buffer[4096];
    const ssize_t size = recv(descriptor_, buffer, sizeof buffer, 0);
    return size > 0 ? std::string(buffer, static_cast<std::size_t>(size)) : "";
  }

 private:
  const int descriptor_ = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
};

}  // namespace support

#endif
