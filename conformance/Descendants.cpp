#include "conformance/Descendants.h"

#include <sys/prctl.h>
#include <sys/wait.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <vector>

namespace conformance {
namespace {

// Each thread has a list of its own. A thread that ends meanwhile has an empty list.
std::vector<pid_t> children() {
  namespace fs = std::filesystem;
  std::vector<pid_t> result;
  std::error_code status;
  for (fs::directory_iterator thread("/proc/self/task", status), end; thread != end;
       thread.increment(status)) {
    std::ifstream list(thread->path() / "children");
    for (pid_t pid = 0; list >> pid;) {
      result.push_back(pid);
    }
  }
  return result;
}

}  // namespace

Descendants::Descendants() {
  prctl(PR_SET_CHILD_SUBREAPER, 1);
}

void Descendants::kill() {
  for (bool killed = true; killed;) {
    killed = false;
    for (const pid_t pid : children()) {
      if (::kill(pid, SIGKILL) == 0) {
        waitpid(pid, nullptr, 0);
        killed = true;
      }
    }
  }
}

}  // namespace conformance
