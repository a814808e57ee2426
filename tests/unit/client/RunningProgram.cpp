#include "RunningProgram.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <stdexcept>

namespace topoctl {

RunningProgram::RunningProgram(const std::vector<std::string>& arguments) {
  std::vector<std::string> texts = {"topoctl"};
  texts.insert(texts.end(), arguments.begin(), arguments.end());
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (std::string& text : texts) {
    pointers.push_back(text.data());
  }
  pointers.push_back(nullptr);
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) {
    throw std::runtime_error("no pipe");
  }
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
  std::array<char*, 1> environment = {nullptr};
  const int error = posix_spawn(&process_, TOPOCTL_PROGRAM, &actions, nullptr, pointers.data(),
                                environment.data());
  posix_spawn_file_actions_destroy(&actions);
  close(ends[1]);
  output_ = ends[0];
  if (error != 0) {
    throw std::runtime_error("cannot start " TOPOCTL_PROGRAM);
  }
}

RunningProgram::~RunningProgram() {
  closeOutput();
  if (process_ != 0) {
    signal(SIGKILL);
    wait();
  }
}

std::string RunningProgram::line() {
  std::size_t end = 0;
  while ((end = buffered_.find('\n')) == std::string::npos) {
    std::array<char, 4096> part{};
    const ssize_t got = read(output_, part.data(), part.size());
    if (got <= 0) {
      return "";
    }
    buffered_.append(part.data(), static_cast<std::size_t>(got));
  }
  std::string line = buffered_.substr(0, end);
  buffered_.erase(0, end + 1);
  return line;
}

void RunningProgram::closeOutput() {
  if (output_ >= 0) {
    close(output_);
    output_ = -1;
  }
}

void RunningProgram::signal(int number) {
  kill(process_, number);
}

int RunningProgram::wait() {
  int status = 0;
  if (waitpid(process_, &status, 0) != process_) {
    throw std::runtime_error("the program is lost");
  }
  process_ = 0;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

}  // namespace topoctl
