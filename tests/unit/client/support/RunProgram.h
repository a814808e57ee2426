// Runs the built topoctl as a process.

#ifndef TESTS_UNIT_CLIENT_SUPPORT_RUNPROGRAM_H
#define TESTS_UNIT_CLIENT_SUPPORT_RUNPROGRAM_H

#include <string>
#include <vector>

namespace topoctl {

struct Ended {
  int status;  // exit code; -1 after a signal
  std::string out;
  std::string err;
};

constexpr int kCaptured = -1;
constexpr int kClosed = -2;

// `environment` is the whole environment, as NAME=VALUE. `out` is a borrowed descriptor for
// standard output, or kCaptured or kClosed.
Ended runProgram(const std::vector<std::string>& arguments,
                 const std::vector<std::string>& environment = {}, int out = kCaptured);

}  // namespace topoctl

#endif
