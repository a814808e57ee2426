// Drops root privileges, for tests of file permissions.

#ifndef TESTS_SUPPORT_UNPRIVILEGED_H
#define TESTS_SUPPORT_UNPRIVILEGED_H

#include <unistd.h>

#include <cstdlib>
#include <filesystem>

// For its scope, the process runs as an ordinary user. For root that is the user nobody, and the
// constructor gives nobody access to `directory`. REQUIRES: the process has one thread.
// Borrows the directory. Errors: the constructor throws std::filesystem::filesystem_error; the
// destructor aborts the process when it cannot restore the user.
class Unprivileged {
 public:
  explicit Unprivileged(const std::filesystem::path& directory) {
    if (wasRoot_) {
      std::filesystem::permissions(directory, std::filesystem::perms::all);
      isInForce_ = seteuid(kNobody) == 0;
    }
  }
  ~Unprivileged() {
    if (wasRoot_ && seteuid(0) != 0) {
      std::abort();
    }
  }
  Unprivileged(const Unprivileged&) = delete;
  Unprivileged& operator=(const Unprivileged&) = delete;

  // False when root is not allowed to change the user.
  bool isInForce() const { return isInForce_; }

 private:
  static constexpr uid_t kNobody = 65534;

  const bool wasRoot_ = geteuid() == 0;
  bool isInForce_ = !wasRoot_;
};

#endif
