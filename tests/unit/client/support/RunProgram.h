// Runs the built topoctl as a user does.

#ifndef TESTS_UNIT_CLIENT_SUPPORT_RUNPROGRAM_H
#define TESTS_UNIT_CLIENT_SUPPORT_RUNPROGRAM_H

#include <string>
#include <vector>

namespace topoctl {

struct Ended {
  int status;  // the exit code; -1 when a signal ended it
  std::string out;
  std::string err;
};

constexpr int kCaptured = -1;
constexpr int kClosed = -2;

// `environment` holds NAME=VALUE and is all that the program sees. Its output goes to the
// descriptor `out` (borrowed), is captured or closed.
Ended runProgram(const std::vector<std::string>& arguments,
                 const std::vector<std::string>& environment = {}, int out = kCaptured);

}  // namespace topoctl

#endif
