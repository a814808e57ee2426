#include "tests/unit/client/support/RunProgram.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <memory>
#include <stdexcept>

namespace topoctl {
namespace {

class TemporaryFile {
 public:
  TemporaryFile() : file_(std::tmpfile(), std::fclose) {
    if (file_ == nullptr) {
      throw std::runtime_error("no temporary file");
    }
  }

  int descriptor() const { return fileno(file_.get()); }

  std::string content() const {
    std::rewind(file_.get());
    std::string text;
    std::array<char, 4096> part;
    while (const std::size_t size = std::fread(part.data(), 1, part.size(), file_.get())) {
      text.append(part.data(), size);
    }
    return text;
  }

 private:
  std::unique_ptr<std::FILE, int (*)(std::FILE*)> file_;
};

// The null-terminated array for posix_spawn(); borrows the texts.
std::vector<char*> pointers(std::vector<std::string>& texts) {
  std::vector<char*> result;
  result.reserve(texts.size() + 1);
  for (std::string& text : texts) {
    result.push_back(text.data());
  }
  result.push_back(nullptr);
  return result;
}

int waitFor(pid_t process) {
  int status = 0;
  if (waitpid(process, &status, 0) != process) {
    throw std::runtime_error("the program is lost");
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

int spawn(std::vector<std::string> arguments, std::vector<std::string> environment, int out,
          int err) {
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, err, STDERR_FILENO);
  if (out == kClosed) {
    posix_spawn_file_actions_addclose(&actions, STDOUT_FILENO);
  } else {
    posix_spawn_file_actions_adddup2(&actions, out, STDOUT_FILENO);
  }
  pid_t process = 0;
  const int error = posix_spawn(&process, TOPOCTL_PROGRAM, &actions, nullptr,
                                pointers(arguments).data(), pointers(environment).data());
  posix_spawn_file_actions_destroy(&actions);
  if (error != 0) {
    throw std::runtime_error("cannot start " TOPOCTL_PROGRAM);
  }
  return waitFor(process);
}

}  // namespace

Ended runProgram(const std::vector<std::string>& arguments,
                 const std::vector<std::string>& environment, int out) {
  std::vector<std::string> all = {"topoctl"};
  all.insert(all.end(), arguments.begin(), arguments.end());
  const TemporaryFile captured;
  const TemporaryFile err;
  const int status =
      spawn(all, environment, out == kCaptured ? captured.descriptor() : out, err.descriptor());
  return {status, captured.content(), err.content()};
}

}  // namespace topoctl
