// Permissions do not bind root, so tests of them give up its privileges for a while.

#ifndef TESTS_SUPPORT_UNPRIVILEGED_H
#define TESTS_SUPPORT_UNPRIVILEGED_H

#include <unistd.h>

#include <cstdlib>
#include <filesystem>

// In its scope the process acts as an ordinary user; for root that is the user nobody, who can
// enter the directory given. REQUIRES: one thread.
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

  // False where even root may not become somebody else.
  bool isInForce() const { return isInForce_; }

 private:
  static constexpr uid_t kNobody = 65534;

  const bool wasRoot_ = geteuid() == 0;
  bool isInForce_ = !wasRoot_;
};

#endif
